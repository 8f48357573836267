#include "tests/support/attribute_state.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <sstream>

#include "internal/gl_api.h"

namespace vellum {

namespace {

struct Name {
    char const* text;
    GLenum value;
};

struct Query {
    Name name;
    std::size_t count;  // of values
};

#define VL_NAME(name)                                                                                        \
    { #name, name }
// Not through VL_NAME, which would be given the number instead of the name.
#define VL_QUERY(name, count)                                                                                \
    { {#name, name}, (count) }

constexpr std::size_t MOST_VALUES = 64;  // that one query gives; more than any below

constexpr Name SWITCHES[] = {
    VL_NAME(GL_ALPHA_TEST),
    VL_NAME(GL_AUTO_NORMAL),
    VL_NAME(GL_BLEND),
    VL_NAME(GL_COLOR_LOGIC_OP),
    VL_NAME(GL_COLOR_MATERIAL),
    VL_NAME(GL_COLOR_SUM),
    VL_NAME(GL_CULL_FACE),
    VL_NAME(GL_DEBUG_OUTPUT),
    VL_NAME(GL_DEBUG_OUTPUT_SYNCHRONOUS),
    VL_NAME(GL_DEPTH_CLAMP),
    VL_NAME(GL_DEPTH_TEST),
    VL_NAME(GL_DITHER),
    VL_NAME(GL_FOG),
    VL_NAME(GL_FRAMEBUFFER_SRGB),
    VL_NAME(GL_INDEX_LOGIC_OP),
    VL_NAME(GL_LIGHTING),
    VL_NAME(GL_LINE_SMOOTH),
    VL_NAME(GL_LINE_STIPPLE),
    VL_NAME(GL_MAP1_COLOR_4),
    VL_NAME(GL_MAP1_INDEX),
    VL_NAME(GL_MAP1_NORMAL),
    VL_NAME(GL_MAP1_TEXTURE_COORD_1),
    VL_NAME(GL_MAP1_TEXTURE_COORD_2),
    VL_NAME(GL_MAP1_TEXTURE_COORD_3),
    VL_NAME(GL_MAP1_TEXTURE_COORD_4),
    VL_NAME(GL_MAP1_VERTEX_3),
    VL_NAME(GL_MAP1_VERTEX_4),
    VL_NAME(GL_MAP2_COLOR_4),
    VL_NAME(GL_MAP2_INDEX),
    VL_NAME(GL_MAP2_NORMAL),
    VL_NAME(GL_MAP2_TEXTURE_COORD_1),
    VL_NAME(GL_MAP2_TEXTURE_COORD_2),
    VL_NAME(GL_MAP2_TEXTURE_COORD_3),
    VL_NAME(GL_MAP2_TEXTURE_COORD_4),
    VL_NAME(GL_MAP2_VERTEX_3),
    VL_NAME(GL_MAP2_VERTEX_4),
    VL_NAME(GL_MULTISAMPLE),
    VL_NAME(GL_NORMALIZE),
    VL_NAME(GL_POINT_SMOOTH),
    VL_NAME(GL_POINT_SPRITE),
    VL_NAME(GL_POLYGON_OFFSET_FILL),
    VL_NAME(GL_POLYGON_OFFSET_LINE),
    VL_NAME(GL_POLYGON_OFFSET_POINT),
    VL_NAME(GL_POLYGON_SMOOTH),
    VL_NAME(GL_POLYGON_STIPPLE),
    VL_NAME(GL_PRIMITIVE_RESTART),
    VL_NAME(GL_PRIMITIVE_RESTART_FIXED_INDEX),
    VL_NAME(GL_RASTERIZER_DISCARD),
    VL_NAME(GL_RESCALE_NORMAL),
    VL_NAME(GL_SAMPLE_ALPHA_TO_COVERAGE),
    VL_NAME(GL_SAMPLE_ALPHA_TO_ONE),
    VL_NAME(GL_SAMPLE_COVERAGE),
    VL_NAME(GL_SAMPLE_MASK),
    VL_NAME(GL_SCISSOR_TEST),
    VL_NAME(GL_STENCIL_TEST),
    VL_NAME(GL_TEXTURE_CUBE_MAP_SEAMLESS),
    VL_NAME(GL_VERTEX_PROGRAM_POINT_SIZE),
    VL_NAME(GL_VERTEX_PROGRAM_TWO_SIDE),
    VL_NAME(GL_VERTEX_ARRAY),
    VL_NAME(GL_NORMAL_ARRAY),
    VL_NAME(GL_COLOR_ARRAY),
    VL_NAME(GL_SECONDARY_COLOR_ARRAY),
    VL_NAME(GL_INDEX_ARRAY),
    VL_NAME(GL_EDGE_FLAG_ARRAY),
    VL_NAME(GL_FOG_COORD_ARRAY),
};

constexpr Query QUERIES[] = {
    // Current values
    VL_QUERY(GL_CURRENT_COLOR, 4),
    VL_QUERY(GL_CURRENT_SECONDARY_COLOR, 4),
    VL_QUERY(GL_CURRENT_INDEX, 1),
    VL_QUERY(GL_CURRENT_NORMAL, 3),
    VL_QUERY(GL_CURRENT_FOG_COORD, 1),
    VL_QUERY(GL_CURRENT_RASTER_COLOR, 4),
    VL_QUERY(GL_CURRENT_RASTER_SECONDARY_COLOR, 4),
    VL_QUERY(GL_CURRENT_RASTER_DISTANCE, 1),
    VL_QUERY(GL_CURRENT_RASTER_POSITION, 4),
    VL_QUERY(GL_CURRENT_RASTER_POSITION_VALID, 1),
    VL_QUERY(GL_EDGE_FLAG, 1),

    // Transforms
    VL_QUERY(GL_MATRIX_MODE, 1),
    VL_QUERY(GL_MODELVIEW_MATRIX, 16),
    VL_QUERY(GL_MODELVIEW_STACK_DEPTH, 1),
    VL_QUERY(GL_PROJECTION_MATRIX, 16),
    VL_QUERY(GL_PROJECTION_STACK_DEPTH, 1),
    VL_QUERY(GL_VIEWPORT, 4),
    VL_QUERY(GL_DEPTH_RANGE, 2),
    VL_QUERY(GL_CLIP_ORIGIN, 1),
    VL_QUERY(GL_CLIP_DEPTH_MODE, 1),

    // Lighting
    VL_QUERY(GL_COLOR_MATERIAL_FACE, 1),
    VL_QUERY(GL_COLOR_MATERIAL_PARAMETER, 1),
    VL_QUERY(GL_LIGHT_MODEL_AMBIENT, 4),
    VL_QUERY(GL_LIGHT_MODEL_COLOR_CONTROL, 1),
    VL_QUERY(GL_LIGHT_MODEL_LOCAL_VIEWER, 1),
    VL_QUERY(GL_LIGHT_MODEL_TWO_SIDE, 1),
    VL_QUERY(GL_SHADE_MODEL, 1),
    VL_QUERY(GL_PROVOKING_VERTEX, 1),
    VL_QUERY(GL_CLAMP_VERTEX_COLOR, 1),
    VL_QUERY(GL_CLAMP_FRAGMENT_COLOR, 1),
    VL_QUERY(GL_CLAMP_READ_COLOR, 1),
    VL_QUERY(GL_FOG_COLOR, 4),
    VL_QUERY(GL_FOG_COORD_SRC, 1),
    VL_QUERY(GL_FOG_DENSITY, 1),
    VL_QUERY(GL_FOG_END, 1),
    VL_QUERY(GL_FOG_INDEX, 1),
    VL_QUERY(GL_FOG_MODE, 1),
    VL_QUERY(GL_FOG_START, 1),

    // Rasterization
    VL_QUERY(GL_CULL_FACE_MODE, 1),
    VL_QUERY(GL_FRONT_FACE, 1),
    VL_QUERY(GL_LINE_STIPPLE_PATTERN, 1),
    VL_QUERY(GL_LINE_STIPPLE_REPEAT, 1),
    VL_QUERY(GL_LINE_WIDTH, 1),
    VL_QUERY(GL_POINT_DISTANCE_ATTENUATION, 3),
    VL_QUERY(GL_POINT_FADE_THRESHOLD_SIZE, 1),
    VL_QUERY(GL_POINT_SIZE, 1),
    VL_QUERY(GL_POINT_SIZE_MAX, 1),
    VL_QUERY(GL_POINT_SIZE_MIN, 1),
    VL_QUERY(GL_POINT_SPRITE_COORD_ORIGIN, 1),
    VL_QUERY(GL_POLYGON_MODE, 2),
    VL_QUERY(GL_POLYGON_OFFSET_FACTOR, 1),
    VL_QUERY(GL_POLYGON_OFFSET_UNITS, 1),
    VL_QUERY(GL_PRIMITIVE_RESTART_INDEX, 1),
    VL_QUERY(GL_PATCH_VERTICES, 1),
    VL_QUERY(GL_PATCH_DEFAULT_INNER_LEVEL, 2),
    VL_QUERY(GL_PATCH_DEFAULT_OUTER_LEVEL, 4),
    VL_QUERY(GL_MIN_SAMPLE_SHADING_VALUE, 1),

    // Fragments and framebuffers
    VL_QUERY(GL_ALPHA_TEST_FUNC, 1),
    VL_QUERY(GL_ALPHA_TEST_REF, 1),
    VL_QUERY(GL_ACCUM_CLEAR_VALUE, 4),
    VL_QUERY(GL_BLEND_COLOR, 4),
    VL_QUERY(GL_BLEND_DST_ALPHA, 1),
    VL_QUERY(GL_BLEND_DST_RGB, 1),
    VL_QUERY(GL_BLEND_EQUATION_ALPHA, 1),
    VL_QUERY(GL_BLEND_EQUATION_RGB, 1),
    VL_QUERY(GL_BLEND_SRC_ALPHA, 1),
    VL_QUERY(GL_BLEND_SRC_RGB, 1),
    VL_QUERY(GL_COLOR_CLEAR_VALUE, 4),
    VL_QUERY(GL_COLOR_WRITEMASK, 4),
    VL_QUERY(GL_DEPTH_CLEAR_VALUE, 1),
    VL_QUERY(GL_DEPTH_FUNC, 1),
    VL_QUERY(GL_DEPTH_WRITEMASK, 1),
    VL_QUERY(GL_INDEX_CLEAR_VALUE, 1),
    VL_QUERY(GL_INDEX_WRITEMASK, 1),
    VL_QUERY(GL_LOGIC_OP_MODE, 1),
    VL_QUERY(GL_SAMPLE_COVERAGE_INVERT, 1),
    VL_QUERY(GL_SAMPLE_COVERAGE_VALUE, 1),
    VL_QUERY(GL_SCISSOR_BOX, 4),
    VL_QUERY(GL_STENCIL_BACK_FAIL, 1),
    VL_QUERY(GL_STENCIL_BACK_FUNC, 1),
    VL_QUERY(GL_STENCIL_BACK_PASS_DEPTH_FAIL, 1),
    VL_QUERY(GL_STENCIL_BACK_PASS_DEPTH_PASS, 1),
    VL_QUERY(GL_STENCIL_BACK_REF, 1),
    VL_QUERY(GL_STENCIL_BACK_VALUE_MASK, 1),
    VL_QUERY(GL_STENCIL_BACK_WRITEMASK, 1),
    VL_QUERY(GL_STENCIL_CLEAR_VALUE, 1),
    VL_QUERY(GL_STENCIL_FAIL, 1),
    VL_QUERY(GL_STENCIL_FUNC, 1),
    VL_QUERY(GL_STENCIL_PASS_DEPTH_FAIL, 1),
    VL_QUERY(GL_STENCIL_PASS_DEPTH_PASS, 1),
    VL_QUERY(GL_STENCIL_REF, 1),
    VL_QUERY(GL_STENCIL_VALUE_MASK, 1),
    VL_QUERY(GL_STENCIL_WRITEMASK, 1),
    VL_QUERY(GL_DRAW_BUFFER, 1),
    VL_QUERY(GL_DRAW_BUFFER0, 1),
    VL_QUERY(GL_DRAW_BUFFER1, 1),
    VL_QUERY(GL_READ_BUFFER, 1),
    VL_QUERY(GL_DRAW_FRAMEBUFFER_BINDING, 1),
    VL_QUERY(GL_READ_FRAMEBUFFER_BINDING, 1),
    VL_QUERY(GL_RENDERBUFFER_BINDING, 1),

    // Pixels
    VL_QUERY(GL_PACK_ALIGNMENT, 1),
    VL_QUERY(GL_PACK_IMAGE_HEIGHT, 1),
    VL_QUERY(GL_PACK_LSB_FIRST, 1),
    VL_QUERY(GL_PACK_ROW_LENGTH, 1),
    VL_QUERY(GL_PACK_SKIP_IMAGES, 1),
    VL_QUERY(GL_PACK_SKIP_PIXELS, 1),
    VL_QUERY(GL_PACK_SKIP_ROWS, 1),
    VL_QUERY(GL_PACK_SWAP_BYTES, 1),
    VL_QUERY(GL_UNPACK_ALIGNMENT, 1),
    VL_QUERY(GL_UNPACK_IMAGE_HEIGHT, 1),
    VL_QUERY(GL_UNPACK_LSB_FIRST, 1),
    VL_QUERY(GL_UNPACK_ROW_LENGTH, 1),
    VL_QUERY(GL_UNPACK_SKIP_IMAGES, 1),
    VL_QUERY(GL_UNPACK_SKIP_PIXELS, 1),
    VL_QUERY(GL_UNPACK_SKIP_ROWS, 1),
    VL_QUERY(GL_UNPACK_SWAP_BYTES, 1),
    VL_QUERY(GL_ALPHA_BIAS, 1),
    VL_QUERY(GL_ALPHA_SCALE, 1),
    VL_QUERY(GL_BLUE_BIAS, 1),
    VL_QUERY(GL_BLUE_SCALE, 1),
    VL_QUERY(GL_DEPTH_BIAS, 1),
    VL_QUERY(GL_DEPTH_SCALE, 1),
    VL_QUERY(GL_GREEN_BIAS, 1),
    VL_QUERY(GL_GREEN_SCALE, 1),
    VL_QUERY(GL_RED_BIAS, 1),
    VL_QUERY(GL_RED_SCALE, 1),
    VL_QUERY(GL_INDEX_OFFSET, 1),
    VL_QUERY(GL_INDEX_SHIFT, 1),
    VL_QUERY(GL_MAP_COLOR, 1),
    VL_QUERY(GL_MAP_STENCIL, 1),
    VL_QUERY(GL_ZOOM_X, 1),
    VL_QUERY(GL_ZOOM_Y, 1),

    // Evaluators
    VL_QUERY(GL_MAP1_GRID_DOMAIN, 2),
    VL_QUERY(GL_MAP1_GRID_SEGMENTS, 1),
    VL_QUERY(GL_MAP2_GRID_DOMAIN, 4),
    VL_QUERY(GL_MAP2_GRID_SEGMENTS, 2),

    // Vertex arrays
    VL_QUERY(GL_CLIENT_ACTIVE_TEXTURE, 1),
    VL_QUERY(GL_VERTEX_ARRAY_SIZE, 1),
    VL_QUERY(GL_VERTEX_ARRAY_STRIDE, 1),
    VL_QUERY(GL_VERTEX_ARRAY_TYPE, 1),
    VL_QUERY(GL_VERTEX_ARRAY_BUFFER_BINDING, 1),
    VL_QUERY(GL_NORMAL_ARRAY_STRIDE, 1),
    VL_QUERY(GL_NORMAL_ARRAY_TYPE, 1),
    VL_QUERY(GL_NORMAL_ARRAY_BUFFER_BINDING, 1),
    VL_QUERY(GL_COLOR_ARRAY_SIZE, 1),
    VL_QUERY(GL_COLOR_ARRAY_STRIDE, 1),
    VL_QUERY(GL_COLOR_ARRAY_TYPE, 1),
    VL_QUERY(GL_COLOR_ARRAY_BUFFER_BINDING, 1),
    VL_QUERY(GL_ARRAY_BUFFER_BINDING, 1),
    VL_QUERY(GL_ELEMENT_ARRAY_BUFFER_BINDING, 1),
    VL_QUERY(GL_VERTEX_ARRAY_BINDING, 1),

    // Bindings
    VL_QUERY(GL_ACTIVE_TEXTURE, 1),
    VL_QUERY(GL_CURRENT_PROGRAM, 1),
    VL_QUERY(GL_PROGRAM_PIPELINE_BINDING, 1),
    VL_QUERY(GL_PIXEL_PACK_BUFFER_BINDING, 1),
    VL_QUERY(GL_PIXEL_UNPACK_BUFFER_BINDING, 1),
    VL_QUERY(GL_COPY_READ_BUFFER_BINDING, 1),
    VL_QUERY(GL_COPY_WRITE_BUFFER_BINDING, 1),
    VL_QUERY(GL_DRAW_INDIRECT_BUFFER_BINDING, 1),
    VL_QUERY(GL_UNIFORM_BUFFER_BINDING, 1),
    VL_QUERY(GL_TRANSFORM_FEEDBACK_BINDING, 1),
    VL_QUERY(GL_TRANSFORM_FEEDBACK_BUFFER_BINDING, 1),

    // Stacks, lists, selection and hints
    VL_QUERY(GL_ATTRIB_STACK_DEPTH, 1),
    VL_QUERY(GL_CLIENT_ATTRIB_STACK_DEPTH, 1),
    VL_QUERY(GL_NAME_STACK_DEPTH, 1),
    VL_QUERY(GL_LIST_BASE, 1),
    VL_QUERY(GL_LIST_INDEX, 1),
    VL_QUERY(GL_LIST_MODE, 1),
    VL_QUERY(GL_RENDER_MODE, 1),
    VL_QUERY(GL_FEEDBACK_BUFFER_SIZE, 1),
    VL_QUERY(GL_FEEDBACK_BUFFER_TYPE, 1),
    VL_QUERY(GL_SELECTION_BUFFER_SIZE, 1),
    VL_QUERY(GL_FOG_HINT, 1),
    VL_QUERY(GL_FRAGMENT_SHADER_DERIVATIVE_HINT, 1),
    VL_QUERY(GL_GENERATE_MIPMAP_HINT, 1),
    VL_QUERY(GL_LINE_SMOOTH_HINT, 1),
    VL_QUERY(GL_PERSPECTIVE_CORRECTION_HINT, 1),
    VL_QUERY(GL_POINT_SMOOTH_HINT, 1),
    VL_QUERY(GL_POLYGON_SMOOTH_HINT, 1),
    VL_QUERY(GL_TEXTURE_COMPRESSION_HINT, 1),
};

constexpr Query LIGHT_QUERIES[] = {
    VL_QUERY(GL_AMBIENT, 4),
    VL_QUERY(GL_DIFFUSE, 4),
    VL_QUERY(GL_SPECULAR, 4),
    VL_QUERY(GL_POSITION, 4),
    VL_QUERY(GL_CONSTANT_ATTENUATION, 1),
    VL_QUERY(GL_LINEAR_ATTENUATION, 1),
    VL_QUERY(GL_QUADRATIC_ATTENUATION, 1),
    VL_QUERY(GL_SPOT_CUTOFF, 1),
    VL_QUERY(GL_SPOT_DIRECTION, 3),
    VL_QUERY(GL_SPOT_EXPONENT, 1),
};

constexpr Query MATERIAL_QUERIES[] = {
    VL_QUERY(GL_AMBIENT, 4),  VL_QUERY(GL_DIFFUSE, 4),   VL_QUERY(GL_SPECULAR, 4),
    VL_QUERY(GL_EMISSION, 4), VL_QUERY(GL_SHININESS, 1), VL_QUERY(GL_COLOR_INDEXES, 3),
};

// Of every texture unit that shaders reach.
constexpr Query UNIT_QUERIES[] = {
    VL_QUERY(GL_TEXTURE_BINDING_1D, 1),
    VL_QUERY(GL_TEXTURE_BINDING_1D_ARRAY, 1),
    VL_QUERY(GL_TEXTURE_BINDING_2D, 1),
    VL_QUERY(GL_TEXTURE_BINDING_2D_ARRAY, 1),
    VL_QUERY(GL_TEXTURE_BINDING_2D_MULTISAMPLE, 1),
    VL_QUERY(GL_TEXTURE_BINDING_3D, 1),
    VL_QUERY(GL_TEXTURE_BINDING_BUFFER, 1),
    VL_QUERY(GL_TEXTURE_BINDING_CUBE_MAP, 1),
    VL_QUERY(GL_TEXTURE_BINDING_RECTANGLE, 1),
    VL_QUERY(GL_SAMPLER_BINDING, 1),
};

// Of the units that have texture coordinates, and so an environment and a matrix.
constexpr Query COORDINATE_QUERIES[] = {
    VL_QUERY(GL_CURRENT_TEXTURE_COORDS, 4),
    VL_QUERY(GL_CURRENT_RASTER_TEXTURE_COORDS, 4),
    VL_QUERY(GL_TEXTURE_MATRIX, 16),
    VL_QUERY(GL_TEXTURE_STACK_DEPTH, 1),
};

constexpr Name COORDINATE_SWITCHES[] = {
    VL_NAME(GL_TEXTURE_1D),       VL_NAME(GL_TEXTURE_2D),    VL_NAME(GL_TEXTURE_3D),
    VL_NAME(GL_TEXTURE_CUBE_MAP), VL_NAME(GL_TEXTURE_GEN_S), VL_NAME(GL_TEXTURE_GEN_T),
    VL_NAME(GL_TEXTURE_GEN_R),    VL_NAME(GL_TEXTURE_GEN_Q),
};

constexpr Query ENVIRONMENT_QUERIES[] = {
    VL_QUERY(GL_TEXTURE_ENV_MODE, 1), VL_QUERY(GL_TEXTURE_ENV_COLOR, 4), VL_QUERY(GL_COMBINE_RGB, 1),
    VL_QUERY(GL_COMBINE_ALPHA, 1),    VL_QUERY(GL_SRC0_RGB, 1),          VL_QUERY(GL_SRC1_RGB, 1),
    VL_QUERY(GL_SRC2_RGB, 1),         VL_QUERY(GL_SRC0_ALPHA, 1),        VL_QUERY(GL_SRC1_ALPHA, 1),
    VL_QUERY(GL_SRC2_ALPHA, 1),       VL_QUERY(GL_OPERAND0_RGB, 1),      VL_QUERY(GL_OPERAND1_RGB, 1),
    VL_QUERY(GL_OPERAND2_RGB, 1),     VL_QUERY(GL_OPERAND0_ALPHA, 1),    VL_QUERY(GL_OPERAND1_ALPHA, 1),
    VL_QUERY(GL_OPERAND2_ALPHA, 1),   VL_QUERY(GL_RGB_SCALE, 1),         VL_QUERY(GL_ALPHA_SCALE, 1),
};

constexpr Name GENERATED[] = {VL_NAME(GL_S), VL_NAME(GL_T), VL_NAME(GL_R), VL_NAME(GL_Q)};
constexpr Query GENERATION_QUERIES[] = {VL_QUERY(GL_TEXTURE_GEN_MODE, 1), VL_QUERY(GL_OBJECT_PLANE, 4),
                                        VL_QUERY(GL_EYE_PLANE, 4)};

#undef VL_QUERY
#undef VL_NAME

GLuint integer(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return static_cast<GLuint>(value);
}

/// Reads into the values of a state.
class Reader {
public:
    explicit Reader(std::map<std::string, std::vector<double>>& into) : values(into) {}

    void readAll() {
        for (Name const& name : SWITCHES) {
            values[name.text] = {double(glIsEnabled(name.value))};
        }
        _read("", QUERIES, [](GLenum name, double* out) { glGetDoublev(name, out); });
        _readPlanesAndLights();
        _readMaterials();
        _readStipple();
        _readArrays();
        _readUnits();
    }

private:
    template <class Queries, class Get>
    void _read(std::string const& prefix, Queries const& queries, Get const& get) {
        for (Query const& query : queries) {
            std::array<double, MOST_VALUES> out{};
            get(query.name.value, out.data());
            values[prefix + query.name.text] = {out.begin(),
                                                out.begin() + static_cast<std::ptrdiff_t>(query.count)};
        }
    }

    // For the queries that give floats alone.
    template <class Queries, class Get>
    void _readFloats(std::string const& prefix, Queries const& queries, Get const& get) {
        _read(prefix, queries, [&get](GLenum name, double* out) {
            std::array<float, MOST_VALUES> narrow{};
            get(name, narrow.data());
            std::copy(narrow.begin(), narrow.end(), out);
        });
    }

    void _readPlanesAndLights() {
        for (GLuint i = 0; i < integer(GL_MAX_CLIP_PLANES); ++i) {
            std::string const name = "GL_CLIP_PLANE" + std::to_string(i);
            values[name] = {double(glIsEnabled(GL_CLIP_PLANE0 + i))};
            std::vector<double> plane(4);
            glGetClipPlane(GL_CLIP_PLANE0 + i, plane.data());
            values[name + " equation"] = plane;
        }
        for (GLuint i = 0; i < integer(GL_MAX_LIGHTS); ++i) {
            std::string const name = "GL_LIGHT" + std::to_string(i);
            values[name] = {double(glIsEnabled(GL_LIGHT0 + i))};
            _readFloats(name + ' ', LIGHT_QUERIES,
                        [i](GLenum query, float* out) { glGetLightfv(GL_LIGHT0 + i, query, out); });
        }
    }

    void _readMaterials() {
        for (bool const isFront : {true, false}) {
            _readFloats(isFront ? "GL_FRONT " : "GL_BACK ", MATERIAL_QUERIES,
                        [isFront](GLenum query, float* out) {
                            glGetMaterialfv(isFront ? GL_FRONT : GL_BACK, query, out);
                        });
        }
    }

    void _readStipple() {
        std::array<unsigned char, 128> pattern{};
        glGetPolygonStipple(pattern.data());
        values["polygon stipple"] = {pattern.begin(), pattern.end()};
    }

    void _readArrays() {
        for (GLuint i = 0; i < integer(GL_MAX_VERTEX_ATTRIBS); ++i) {
            std::string const prefix = "attribute " + std::to_string(i) + ' ';
            for (auto const& query : {std::pair{"enabled", GL_VERTEX_ATTRIB_ARRAY_ENABLED},
                                      std::pair{"size", GL_VERTEX_ATTRIB_ARRAY_SIZE},
                                      std::pair{"stride", GL_VERTEX_ATTRIB_ARRAY_STRIDE},
                                      std::pair{"type", GL_VERTEX_ATTRIB_ARRAY_TYPE},
                                      std::pair{"normalized", GL_VERTEX_ATTRIB_ARRAY_NORMALIZED},
                                      std::pair{"buffer", GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING}}) {
                GLint value = 0;
                glGetVertexAttribiv(i, GLenum(query.second), &value);
                values[prefix + query.first] = {double(value)};
            }
            if (i != 0) {  // attribute 0 has no current value where it is the vertex
                std::vector<double> current(4);
                glGetVertexAttribdv(i, GL_CURRENT_VERTEX_ATTRIB, current.data());
                values[prefix + "current"] = current;
            }
        }
    }

    void _readUnits() {
        GLuint const active = integer(GL_ACTIVE_TEXTURE);
        GLuint const clientActive = integer(GL_CLIENT_ACTIVE_TEXTURE);
        for (GLuint i = 0; i < integer(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS); ++i) {
            glActiveTexture(GL_TEXTURE0 + i);
            _read("GL_TEXTURE" + std::to_string(i) + ' ', UNIT_QUERIES,
                  [](GLenum name, double* out) { glGetDoublev(name, out); });
        }
        for (GLuint i = 0; i < integer(GL_MAX_TEXTURE_COORDS); ++i) {
            glActiveTexture(GL_TEXTURE0 + i);
            glClientActiveTexture(GL_TEXTURE0 + i);
            _readCoordinates("GL_TEXTURE" + std::to_string(i) + ' ');
        }
        glActiveTexture(active);
        glClientActiveTexture(clientActive);
    }

    void _readCoordinates(std::string const& prefix) {
        _read(prefix, COORDINATE_QUERIES, [](GLenum name, double* out) { glGetDoublev(name, out); });
        for (Name const& name : COORDINATE_SWITCHES) {
            values[prefix + name.text] = {double(glIsEnabled(name.value))};
        }
        values[prefix + "GL_TEXTURE_COORD_ARRAY"] = {double(glIsEnabled(GL_TEXTURE_COORD_ARRAY))};
        _readFloats(prefix, ENVIRONMENT_QUERIES,
                    [](GLenum name, float* out) { glGetTexEnvfv(GL_TEXTURE_ENV, name, out); });
        GLint replaced = 0;
        glGetTexEnviv(GL_POINT_SPRITE, GL_COORD_REPLACE, &replaced);
        values[prefix + "GL_COORD_REPLACE"] = {double(replaced)};
        float bias = 0;
        glGetTexEnvfv(GL_TEXTURE_FILTER_CONTROL, GL_TEXTURE_LOD_BIAS, &bias);
        values[prefix + "GL_TEXTURE_LOD_BIAS"] = {double(bias)};
        for (Name const& coordinate : GENERATED) {
            _read(prefix + coordinate.text + ' ', GENERATION_QUERIES,
                  [&coordinate](GLenum name, double* out) { glGetTexGendv(coordinate.value, name, out); });
        }
    }

    std::map<std::string, std::vector<double>>& values;
};

std::string textOf(std::vector<double> const& values) {
    std::ostringstream text;
    for (double const& value : values) {
        text << ' ' << value;
    }
    return text.str();
}

}  // namespace

AttributeState::AttributeState() {
    Reader(values).readAll();
}

std::vector<std::string> AttributeState::namesThatDiffer(AttributeState const& other) const {
    std::vector<std::string> names;
    for (auto const& [name, value] : values) {
        auto const found = other.values.find(name);
        if (found == other.values.end() || found->second != value) {
            names.push_back(name);
        }
    }
    return names;
}

std::string AttributeState::differences(AttributeState const& other) const {
    std::string text;
    for (std::string const& name : namesThatDiffer(other)) {
        auto const found = other.values.find(name);
        text += name + ':' + textOf(values.at(name)) + " ->" +
                (found == other.values.end() ? " nothing" : textOf(found->second)) + '\n';
    }
    return text;
}

}  // namespace vellum
