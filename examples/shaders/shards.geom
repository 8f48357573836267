#version 150 compatibility
// Breaks the surface: every triangle becomes a smaller one, lifted from the surface, with walls down to where it was.
//
//   FloatVar0   how far the highest shards are lifted, in radii of the model; 0 stands for 0.12
//   FloatVar1   the size of a shard beside that of its triangle; 0 stands for 0.8
//
// This is the dialect of OpenGL 3.2. Drivers with GL_EXT_geometry_shader4 take "#version 120" and that extension's
// names instead, and have the layout from the program.

layout(triangles) in;
layout(triangle_strip, max_vertices = 15) out;

uniform float FloatVar0;
uniform float FloatVar1;

out vec3 eyePosition;
out vec3 eyeNormal;
out float lifted;  // 0 to 1

vec3 top[3];
vec3 bottom[3];
float height;

void emit(vec3 p, vec3 normal)
{
    eyePosition = vec3(gl_ModelViewMatrix * vec4(p, 1.0));
    eyeNormal = gl_NormalMatrix * normal;
    lifted = height;
    gl_Position = gl_ModelViewProjectionMatrix * vec4(p, 1.0);
    EmitVertex();
}

void wall(int a, int b)
{
    vec3 normal = cross(bottom[b] - bottom[a], top[a] - bottom[a]);
    emit(bottom[a], normal);
    emit(bottom[b], normal);
    emit(top[a], normal);
    emit(top[b], normal);
    EndPrimitive();
}

void main()
{
    vec3 a = gl_in[0].gl_Position.xyz;
    vec3 b = gl_in[1].gl_Position.xyz;
    vec3 c = gl_in[2].gl_Position.xyz;
    vec3 normal = cross(b - a, c - a);
    if (dot(normal, normal) == 0.0) {
        return;
    }
    normal = normalize(normal);
    vec3 middle = (a + b + c) / 3.0;

    // Waves over the model, and a little chance from shard to shard.
    float chance = fract(sin(dot(middle, vec3(127.1, 311.7, 74.7))) * 43758.5453);
    float wave = 0.5 + 0.5 * sin(5.0 * middle.x + 4.0 * middle.y - 3.0 * middle.z);
    height = clamp(0.75 * wave * wave + 0.25 * chance, 0.0, 1.0);

    float size = FloatVar1 > 0.0 ? FloatVar1 : 0.8;
    vec3 lift = normal * height * (FloatVar0 > 0.0 ? FloatVar0 : 0.12);
    bottom[0] = mix(middle, a, size);
    bottom[1] = mix(middle, b, size);
    bottom[2] = mix(middle, c, size);
    for (int i = 0; i < 3; ++i) {
        top[i] = bottom[i] + lift;
        emit(top[i], normal);
    }
    EndPrimitive();
    wall(0, 1);
    wall(1, 2);
    wall(2, 0);
}
