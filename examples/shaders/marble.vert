#version 120
// Hands the place in the model, for the pattern, and the place and normal before the eye, for the light, to marble.frag.

varying vec3 objectPosition;  // the model fits into a ball of radius 1
varying vec3 eyePosition;
varying vec3 eyeNormal;

void main()
{
    objectPosition = gl_Vertex.xyz;
    eyePosition = vec3(gl_ModelViewMatrix * gl_Vertex);
    eyeNormal = gl_NormalMatrix * gl_Normal;
    gl_Position = ftransform();
}
