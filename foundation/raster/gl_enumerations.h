#pragma once

/// \file
/// The enumerations that the render layer passes to OpenGL unchanged. The enumerators are the GL names
/// without `GL_` and carry the numbers of the constants they name; any other GL value converts, as in
/// `Primitive::type(0x0004)`.

namespace vellum {

/// The primitives that glBegin, glDrawArrays and glDrawElements assemble from vertices.
struct Primitive {
    enum type : unsigned int {
        POINTS = 0x0000,
        LINES = 0x0001,
        LINE_LOOP = 0x0002,
        LINE_STRIP = 0x0003,
        TRIANGLES = 0x0004,
        TRIANGLE_STRIP = 0x0005,
        TRIANGLE_FAN = 0x0006,
        QUADS = 0x0007,
        QUAD_STRIP = 0x0008,
        POLYGON = 0x0009
    };
};

/// Where a buffer object is bound.
struct BufferTarget {
    enum type : unsigned int {
        ARRAY_BUFFER = 0x8892,
        ELEMENT_ARRAY_BUFFER = 0x8893,
        PIXEL_PACK_BUFFER = 0x88EB,
        PIXEL_UNPACK_BUFFER = 0x88EC
    };
};

/// How a buffer's data store is going to be used.
struct BufferUsage {
    enum type : unsigned int {
        STREAM_DRAW = 0x88E0,
        STREAM_READ = 0x88E1,
        STREAM_COPY = 0x88E2,
        STATIC_DRAW = 0x88E4,
        STATIC_READ = 0x88E5,
        STATIC_COPY = 0x88E6,
        DYNAMIC_DRAW = 0x88E8,
        DYNAMIC_READ = 0x88E9,
        DYNAMIC_COPY = 0x88EA
    };
};

/// The access to a mapped buffer.
struct BufferAccess {
    enum type : unsigned int { READ_ONLY = 0x88B8, WRITE_ONLY = 0x88B9, READ_WRITE = 0x88BA };
};

/// Client arrays, and the server capabilities that Core_RL::enable switches on.
struct ClientCapability {
    enum type : unsigned int {
        VERTEX_ARRAY = 0x8074,
        NORMAL_ARRAY = 0x8075,
        COLOR_ARRAY = 0x8076,
        INDEX_ARRAY = 0x8077,
        TEXTURE_COORD_ARRAY = 0x8078,
        EDGE_FLAG_ARRAY = 0x8079,
        POINT_SMOOTH = 0x0B10,
        LINE_SMOOTH = 0x0B20,
        POLYGON_SMOOTH = 0x0B41,
        CULL_FACE = 0x0B44,
        LIGHTING = 0x0B50,
        COLOR_MATERIAL = 0x0B57,
        DEPTH_TEST = 0x0B71,
        NORMALIZE = 0x0BA1,
        BLEND = 0x0BE2,
        TEXTURE_2D = 0x0DE1,
        VERTEX_PROGRAM_POINT_SIZE = 0x8642,
        POINT_SPRITE = 0x8861
    };
};

/// Component types of vertex and index data.
struct DataType {
    enum type : unsigned int {
        BYTE = 0x1400,
        UNSIGNED_BYTE = 0x1401,
        SHORT = 0x1402,
        UNSIGNED_SHORT = 0x1403,
        INT = 0x1404,
        UNSIGNED_INT = 0x1405,
        FLOAT = 0x1406,
        DOUBLE = 0x140A
    };
};

/// Shader stages, including the geometry stage of GL_EXT_geometry_shader4.
struct ShaderType {
    enum type : unsigned int {
        FRAGMENT_SHADER = 0x8B30,
        VERTEX_SHADER = 0x8B31,
        GEOMETRY_SHADER_EXT = 0x8DD9
    };
};

/// The program parameters of GL_EXT_geometry_shader4.
struct ShaderParameterName {
    enum type : unsigned int {
        GEOMETRY_VERTICES_OUT_EXT = 0x8DDA,
        GEOMETRY_INPUT_TYPE_EXT = 0x8DDB,
        GEOMETRY_OUTPUT_TYPE_EXT = 0x8DDC
    };
};

/// The subject of a hint.
struct HintTarget {
    enum type : unsigned int {
        PERSPECTIVE_CORRECTION_HINT = 0x0C50,
        POINT_SMOOTH_HINT = 0x0C51,
        LINE_SMOOTH_HINT = 0x0C52,
        POLYGON_SMOOTH_HINT = 0x0C53,
        FOG_HINT = 0x0C54,
        GENERATE_MIPMAP_HINT = 0x8192,
        TEXTURE_COMPRESSION_HINT = 0x84EF,
        FRAGMENT_SHADER_DERIVATIVE_HINT = 0x8B8B
    };
};

/// The request of a hint.
struct HintMode {
    enum type : unsigned int { DONT_CARE = 0x1100, FASTEST = 0x1101, NICEST = 0x1102 };
};

/// Parameters of point rasterization.
struct PointParameterName {
    enum type : unsigned int {
        POINT_SIZE_MIN = 0x8126,
        POINT_SIZE_MAX = 0x8127,
        POINT_FADE_THRESHOLD_SIZE = 0x8128,
        POINT_DISTANCE_ATTENUATION = 0x8129,
        POINT_SPRITE_COORD_ORIGIN = 0x8CA0
    };
};

}  // namespace vellum
