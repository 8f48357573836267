#version 120
// Stripes across the picture, lit from the viewer.
//
//   FloatVar0   width of a stripe, pixels; 0 stands for 12
//   BaseColor   every other stripe; those in between are white

uniform float FloatVar0;
uniform vec4 BaseColor;

varying vec3 eyeNormal;

void main()
{
    float width = FloatVar0 > 0.0 ? FloatVar0 : 12.0;
    float isColored = step(width, mod(gl_FragCoord.x + gl_FragCoord.y, 2.0 * width));
    float light = 0.25 + 0.75 * abs(normalize(eyeNormal).z);
    gl_FragColor = vec4(light * mix(vec3(1.0), BaseColor.rgb, isColored), 1.0);
}
