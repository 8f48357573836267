#version 120
// Hands the normal before the eye to stripes.frag, and the color to any fragment stage that shows it.

varying vec3 eyeNormal;

void main()
{
    eyeNormal = gl_NormalMatrix * gl_Normal;
    gl_FrontColor = gl_Color;
    gl_Position = ftransform();
}
