#version 120
varying vec3 other;
void main()
{
    gl_FragColor = vec4(other, 1.0);
}
