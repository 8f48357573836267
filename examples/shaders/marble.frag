#version 120
// Polished marble: veins are the zeros of a wave that noise bends, under the first two lights.
//
//   FloatVar0   how fine the pattern is; 0 stands for 3
//   BaseColor   the stone between the veins
//   Vec3Var0    the veins

uniform float FloatVar0;
uniform vec3 Vec3Var0;
uniform vec4 BaseColor;
uniform int nLights;

varying vec3 objectPosition;
varying vec3 eyePosition;
varying vec3 eyeNormal;

float random(vec3 cell)
{
    return fract(sin(dot(cell, vec3(12.9898, 78.233, 37.719))) * 43758.5453);
}

// A value between 0 and 1 that changes smoothly from cell to cell.
float noise(vec3 p)
{
    vec3 cell = floor(p);
    vec3 t = fract(p);
    t = t * t * (3.0 - 2.0 * t);
    vec2 o = vec2(0.0, 1.0);
    vec4 low = vec4(random(cell), random(cell + o.yxx), random(cell + o.xyx), random(cell + o.yyx));
    vec4 high = vec4(random(cell + o.xxy), random(cell + o.yxy), random(cell + o.xyy), random(cell + o.yyy));
    vec4 both = mix(low, high, t.z);
    vec2 rows = mix(both.xz, both.yw, t.x);
    return mix(rows.x, rows.y, t.y);
}

float turbulence(vec3 p)
{
    float sum = 0.0;
    float part = 0.5;
    for (int i = 0; i < 5; ++i) {
        sum += part * noise(p);
        p = p * 2.03 + 7.1;
        part *= 0.5;
    }
    return sum;
}

vec3 stone(vec3 p)
{
    float bend = turbulence(p * 1.4);
    float wide = abs(sin(dot(p, vec3(1.3, 2.1, 0.9)) + 7.0 * bend));
    float fine = abs(sin(dot(p, vec3(-2.7, 1.1, 2.3)) * 2.0 + 9.0 * turbulence(p * 2.3 + 3.0)));
    float veins = 0.85 * pow(1.0 - wide, 5.0) + 0.45 * pow(1.0 - fine, 9.0);
    vec3 ground = BaseColor.rgb * (0.86 + 0.22 * turbulence(p * 3.1));
    return mix(ground, Vec3Var0, clamp(veins, 0.0, 1.0));
}

void main()
{
    vec3 color = stone(objectPosition * (FloatVar0 > 0.0 ? FloatVar0 : 3.0));
    vec3 view = normalize(-eyePosition);
    vec3 normal = normalize(eyeNormal);
    normal = dot(normal, view) < 0.0 ? -normal : normal;

    vec3 shade = color * vec3(0.20, 0.21, 0.24);
    vec3 shine = vec3(0.0);
    for (int i = 0; i < 2; ++i) {
        if (i < nLights) {
            vec3 light = normalize(gl_LightSource[i].position.xyz - eyePosition);
            vec3 middle = normalize(light + view);
            shade += color * gl_LightSource[i].diffuse.rgb * max(dot(normal, light), 0.0);
            shine += gl_LightSource[i].specular.rgb * pow(max(dot(normal, middle), 0.0), 90.0);
        }
    }
    // Polish mirrors the surroundings where it is seen from the side.
    float edge = pow(1.0 - max(dot(normal, view), 0.0), 4.0);
    gl_FragColor = vec4(shade + 0.55 * shine + 0.30 * edge * vec3(0.75, 0.85, 1.0), 1.0);
}
