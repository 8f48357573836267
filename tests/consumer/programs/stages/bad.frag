#version 120
varying vec3 eyeNormal;
void main()
{
    gl_FragColor = vec4(undefinedThing, 1.0);
}
