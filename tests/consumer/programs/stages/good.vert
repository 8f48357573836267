#version 120
varying vec3 eyeNormal;
void main()
{
    eyeNormal = gl_NormalMatrix * gl_Normal;
    gl_Position = ftransform();
}
