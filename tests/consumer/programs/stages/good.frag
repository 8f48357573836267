#version 120
varying vec3 eyeNormal;
uniform float FloatVar0;
uniform vec4 BaseColor;
void main()
{
    float stripe = step(0.5, fract(FloatVar0 * normalize(eyeNormal).y));
    gl_FragColor = vec4(mix(BaseColor.rgb, vec3(1.0), stripe), 1.0);
}
