#version 120
// Leaves the corners of the triangles in object space for shards.geom.

void main()
{
    gl_Position = gl_Vertex;
}
