#version 120
// Colors the shards of shards.geom by how far they are lifted, under the first two lights.
//
//   BaseColor   shards in place
//   Vec3Var0    the highest shards

uniform vec3 Vec3Var0;
uniform vec4 BaseColor;
uniform int nLights;

varying vec3 eyePosition;
varying vec3 eyeNormal;
varying float lifted;

void main()
{
    vec3 color = mix(BaseColor.rgb, Vec3Var0, smoothstep(0.1, 0.8, lifted));
    vec3 view = normalize(-eyePosition);
    vec3 normal = normalize(eyeNormal);
    normal = dot(normal, view) < 0.0 ? -normal : normal;
    vec3 shade = color * vec3(0.24, 0.25, 0.28);
    for (int i = 0; i < 2; ++i) {
        if (i < nLights) {
            vec3 light = normalize(gl_LightSource[i].position.xyz - eyePosition);
            vec3 middle = normalize(light + view);
            shade += color * gl_LightSource[i].diffuse.rgb * max(dot(normal, light), 0.0);
            shade += 0.25 * gl_LightSource[i].specular.rgb * pow(max(dot(normal, middle), 0.0), 30.0);
        }
    }
    gl_FragColor = vec4(shade, 1.0);
}
