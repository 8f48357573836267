#pragma once

#include "foundation/basic/Array.h"
#include "foundation/basic/VL_String.h"
#include "foundation/export.h"
#include "foundation/geometry/Box2.h"
#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Box3Points.h"
#include "foundation/geometry/Box3Points_ex.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/GeometryTree.h"
#include "foundation/geometry/Matrix3.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Obb3.h"
#include "foundation/geometry/Plane3.h"
#include "foundation/geometry/Plane3System.h"
#include "foundation/geometry/TricubicVoxel.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Tuple4.h"
#include "foundation/geometry/Tuple8.h"
#include "foundation/geometry/VL_AXIS.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/RenderModes.h"
#include "foundation/raster/gl_enumerations.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

namespace vellum {

class Camera_RL;
class Core_RL;

/// The render layer that the renderers draw through: the instance constructed last. Not owned, and not
/// cleared when that instance is destroyed.
extern VL_FOUNDATION_EXPORT Core_RL* VL_Raster;

/// The abstract render layer: every operation of the system that draws the viewport of an application.
///
/// Applications and renderers program against this class and do not depend on the drawing system that
/// implements it. The class holds the parts that every implementation needs: the stacks of render state, the
/// camera, the queue of textures to delete, and the drawings that are composed of simpler ones. Core_RL_GL
/// implements it on OpenGL, and documents each operation with its calls.
///
/// Use:
///
///     Core_RL* layer = new Core_RL_GL;            // a context is current
///     layer->pushColor({1, 0.5F, 0, 1});
///     layer->pushFillingFront(FILLING_LINES);
///     layer->renderSphere({0, 0, 0}, 1);
///     layer->popFillingFront();
///     layer->popColor(1);
///
/// State: the top of each stack is the current value. A setter replaces it; a push puts a value above it, and
/// the matching pop makes the value below current again, whether a push or a setter had put it there. Pushes
/// and pops apply values through the virtual setters. A pop without a push re-applies the value at the bottom
/// of its stack.
///
/// Subclasses: a setter that changes the drawing system's state also writes its value to the top of the
/// stack. A subclass that overrides such a setter and passes another value on (a scaled width) writes the
/// original value to the top afterwards, for callers of the setter; pushes and pops do so themselves. Where
/// an override neither passes the value on nor writes it, the value is lost at the next pop.
///
/// The order of the virtual operations is part of the interface. All operations must be called on the thread
/// that owns the drawing system's context, except queueUnloadTextureColor().
///
/// Groups: allocation; state stacks; camera and point state; buffers and draw calls; memory, shaders and
/// errors; lighting and render state; textures and transforms; picking; segments and planes; axis gizmos;
/// circles; arrows; ellipses; triangles and points; boxes; composed drawings; triangle lists; viewports.
class VL_FOUNDATION_EXPORT Core_RL {
public:
    Core_RL();  ///< Every stack holds one entry, the state of a new context. Touches no drawing system.
    Core_RL(Core_RL const&) = delete;
    Core_RL& operator=(Core_RL const&) = delete;

    // == Allocation ==
    // Render layers are allocated with malloc and free, so that any library of the family may delete them.

    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, std::nothrow_t const&) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* memory) noexcept;
    static void operator delete(void* memory, std::nothrow_t const&) noexcept;
    static void operator delete(void*, void*) noexcept {}

    // == State stacks ==

    void pushColor(Color4<float> const& color);   ///< Makes a color current.
    void popColor(unsigned int const& count);     ///< Removes `count` colors, but never the bottom one.
    void pushBlending(BlendingMode const& mode);  ///< Makes a blending mode current.
    void popBlending();
    void pushCulling(CullingMode const& mode);  ///< Makes a culling mode current.
    void popCulling();
    void pushDepthTest(DepthtTestMode const& mode);  ///< Makes a depth test current.
    void popDepthTest();
    void pushFillingFront(FillingMode const& mode);  ///< Makes a filling of front faces current.
    void popFillingFront();
    void pushFillingBack(FillingMode const& mode);  ///< Makes a filling of back faces current.
    void popFillingBack();
    void pushLineWidth(float const& width);  ///< Makes a line width in pixels current.
    void popLineWidth();

    Color4<float> const& currentColor() const { return colorStack.back(); }
    BlendingMode const& currentBlending() const { return blendingStack.back(); }
    CullingMode const& currentCulling() const { return cullingStack.back(); }
    DepthtTestMode const& currentDepthTest() const { return depthTestStack.back(); }
    FillingMode const& currentFillingFront() const { return fillingFrontStack.back(); }
    FillingMode const& currentFillingBack() const { return fillingBackStack.back(); }
    float const& currentLineWidth() const { return lineWidthStack.back(); }
    float const& currentPointSize() const { return pointSize; }
    float const& arrowHeadLength() const { return headLength; }  ///< As setArrowHeadLength() set it.
    bool zBias() const { return isZBiased; }                     ///< As setZBias() set it.

    // == Camera and point state ==

    virtual ~Core_RL();

    virtual void setCamera(Camera_RL* camera);  ///< Not owned; may be null. Loads no matrix.
    virtual Camera_RL* getCamera();             ///< As setCamera() set it; may be null.

    /// Sets the length of arrow heads that the application draws itself; no drawing of this class reads it.
    virtual void setArrowHeadLength(float const& length);

    /// Sets the point size in pixels. \return the size it replaces.
    virtual float setPointSize(float const& size);

    /// Sets the line width in pixels, in place of the one on top of its stack.
    virtual void setLineWidth(float const& width) = 0;

    /// Draws with the camera's slightly shifted depths (true) or with its ordinary ones (false). Loads the
    /// camera's projection matrix; without a camera the choice is only stored.
    virtual void setZBias(bool on);

    /// Whether the drawing system lists the extension; exact and case-sensitive.
    virtual bool isExtensionSupported(char const* name) = 0;

    // == Buffers and draw calls ==
    // Passed to the drawing system unchanged.

    virtual void begin(Primitive::type primitive) = 0;
    virtual void end() = 0;
    virtual void genBuffers(unsigned long count, unsigned int* ids) = 0;
    virtual void deleteBuffers(unsigned long count, unsigned int* ids) = 0;
    virtual void bindBuffer(BufferTarget::type target, unsigned int id) = 0;
    virtual void bufferData(BufferTarget::type target, unsigned long size, void* data,
                            BufferUsage::type usage) = 0;
    /// \param offset in bytes, as a pointer-sized value.
    virtual void bufferSubData(BufferTarget::type target, void* offset, unsigned long size, void* data) = 0;
    virtual void enableClientState(ClientCapability::type array) = 0;
    /// Deliberate (server-side-enable): enables a server capability, although the argument has the type of
    /// client arrays.
    virtual void enable(ClientCapability::type capability) = 0;
    virtual void disableClientState(ClientCapability::type array) = 0;
    virtual void vertexPointer(int size, DataType::type type, unsigned long stride, void* pointer) = 0;
    virtual void colorPointer(int size, DataType::type type, unsigned long stride, void* pointer) = 0;
    virtual void drawElements(Primitive::type mode, unsigned long count, DataType::type type,
                              void* indices) = 0;
    virtual void drawArrays(Primitive::type mode, unsigned long first, unsigned long count) = 0;

    // == Memory, shaders and errors ==

    virtual unsigned int getTotalGpuMemory() = 0;  ///< Kilobytes of video memory, 0 when unknown.
    virtual unsigned int getFreeGpuMemory() = 0;   ///< Kilobytes of free video memory, 0 when unknown.

    virtual bool checkShaderSupport() const = 0;  ///< Whether programs can be used at all.
    virtual unsigned int createShader(ShaderType::type type) = 0;
    virtual void shaderSource(unsigned int shader, unsigned long count, char const** strings,
                              int* lengths) = 0;
    virtual void compileShader(unsigned int shader) = 0;
    virtual void attachShader(unsigned int program, unsigned int shader) = 0;
    virtual unsigned int createProgram() = 0;
    virtual int getAttribLocation(unsigned int program, char* name) = 0;
    virtual int getUniformLocation(unsigned int program, char* name) = 0;
    virtual void linkProgram(unsigned int program) = 0;
    virtual void useProgram(unsigned int program) = 0;
    /// Prints the log of a shader that failed to compile, under `name`.
    virtual void checkShaderCompilationErrors(unsigned int shader, char const* name) = 0;
    /// Prints the log of a program that failed to link, under `name` and `other`.
    virtual void checkProgramLinkageErrors(unsigned int program, char const* name, char const* other) = 0;
    virtual void programParameterI(unsigned int program, ShaderParameterName::type parameter, int value) = 0;
    virtual void detachShader(unsigned int program, unsigned int shader) = 0;
    virtual void deleteShader(unsigned int shader) = 0;
    virtual void deleteProgram(unsigned int program) = 0;
    /// Names the pending error. Does not return if there is one; see Core_RL_GL.
    virtual bool getError(VL_String& message, int& code) = 0;
    /// Clears all pending errors of the drawing system. \return whether there were any.
    virtual bool getError(char const* where, int line) = 0;
    virtual void uniform1f(int location, float x) = 0;
    virtual void uniform3f(int location, float x, float y, float z) = 0;
    virtual void hint(HintTarget::type target, HintMode::type mode) = 0;
    virtual void pointParameterfvEXT(PointParameterName::type parameter, float* values) = 0;
    virtual void pointParameterfEXT(PointParameterName::type parameter, float value) = 0;
    virtual void* mapBuffer(BufferTarget::type target, BufferAccess::type access) = 0;
    virtual void unmapBuffer(BufferTarget::type target) = 0;

    // == Lighting and render state ==

    virtual Matrix4<float> getModelViewMatrix_asFloat() const = 0;            ///< Column by column.
    virtual Matrix4<float> getModelViewTransposedMatrix_asFloat() const = 0;  ///< Row by row.

    virtual void enableLighting() = 0;
    virtual void disableLighting() = 0;
    virtual void enableLight_0() = 0;
    virtual void disableLight_0() = 0;
    virtual void enableLight_1() = 0;
    virtual void disableLight_1() = 0;
    virtual void enableColorMaterial() = 0;
    virtual void disableColorMaterial() = 0;

    // Each of these, except setLineStipple(), makes its value current in place of the one on top of its
    // stack.

    virtual void setColor(Color4<float> const& color) = 0;
    virtual void setFillingFront(FillingMode const& mode) = 0;
    virtual void setFillingBack(FillingMode const& mode) = 0;
    virtual void setLineStipple(bool on) = 0;
    virtual void setBlending(BlendingMode const& mode) = 0;
    virtual void setDepthTest(DepthtTestMode const& mode) = 0;
    virtual void setCulling(CullingMode const& mode) = 0;

    // == Textures and transforms ==

    virtual unsigned int createTexture() = 0;
    virtual void destroyTexture(unsigned int const& texture) = 0;
    virtual void createTextures(unsigned int const& count, Array<unsigned int>& textures) = 0;
    virtual void destroyTextures(Array<unsigned int> const& textures) = 0;
    virtual void setTransform(Matrix4<double> const& matrix) = 0;
    virtual void setTransform(Matrix4<float> const& matrix) = 0;
    virtual void pushTransform(Matrix4<double> const& matrix) = 0;
    virtual void pushTransform(Matrix4<float> const& matrix) = 0;
    virtual void popTransform() = 0;
    virtual void pushTextureLuminance(unsigned int const& texture, unsigned int const& width,
                                      unsigned int const& height, bool const& blend,
                                      Array<float> const& values) = 0;
    virtual void popTextureLuminance(unsigned int const& texture) = 0;
    virtual void loadTextureColor(unsigned int const& width, unsigned int const& height,
                                  unsigned char const* pixels, unsigned int& texture,
                                  TextureClampingMode const& clamping) = 0;
    virtual void loadTextureColor(unsigned int const& width, unsigned int const& height,
                                  int const& bitsPerChannel, int const& bitsPerPixel, void const* pixels,
                                  unsigned int& texture, TextureClampingMode const& clamping) = 0;
    virtual void unLoadTextureColor(unsigned int const& texture) = 0;
    virtual void activateTextureColor(unsigned int const& texture) = 0;
    virtual void disableTextureColor() = 0;

    /// Queues a texture for deletion by destroy_RL() and sets the name to 0xFFFFFFFF, which means no texture.
    /// May be called on any thread.
    virtual void queueUnloadTextureColor(unsigned int& texture) = 0;

    /// Deletes every queued texture.
    virtual void destroy_RL() = 0;

    // == Picking ==

    virtual void loadName(unsigned int name) = 0;  ///< The picking name of the drawings that follow.

    // == Segments and planes ==

    virtual void renderStroke3(Vector3<float> const& center, Vector3<float> const& direction,
                               float const& halfLength) = 0;
    virtual void renderSegment2(Vector2<float> const& a, Vector2<float> const& b) = 0;
    virtual void renderPlane3(Plane3<float> const& plane, float const& size,
                              unsigned int const& divisions) = 0;
    virtual void renderSegment3(Vector3<float> const& a, Vector3<float> const& b) = 0;
    virtual void renderSegmentStipple3(Vector3<float> const& a, Vector3<float> const& b) = 0;

    // == Axis gizmos ==

    virtual void renderBox3(unsigned int const& name, Color4<float> const& color, float const& halfSize) = 0;
    virtual void renderAxesBox3(unsigned int const& nameX, unsigned int const& nameY,
                                unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                float const& size) = 0;
    virtual void renderAxesBox3(unsigned int const& nameX, unsigned int const& nameY,
                                unsigned int const& nameZ, unsigned int const& nameCenter,
                                Tuple4<Color4<float>> const& colors, float const& size) = 0;
    virtual void renderAxisBox3(VL_AXIS const& axis, float const& size) = 0;
    virtual void renderAxisBox3(VL_AXIS const& axis, unsigned int const& name, float const& size) = 0;
    virtual void renderAxesCircleStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                          unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                          float const& radius) = 0;
    virtual void renderAxesCircle3(unsigned int const& nameX, unsigned int const& nameY,
                                   unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                   float const& radius) = 0;
    virtual void renderAxesCircleCulled3(unsigned int const& nameX, unsigned int const& nameY,
                                         unsigned int const& nameZ, Vector3<float> const& viewDirection,
                                         Matrix4<float> const& frame, float scale,
                                         Tuple3<Color4<float>> const& colors, float const& radius) = 0;
    virtual void renderAxesCircleCulledStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                                unsigned int const& nameZ,
                                                Vector3<float> const& viewDirection,
                                                Matrix4<float> const& frame, float scale,
                                                Tuple3<Color4<float>> const& colors, float const& radius) = 0;
    virtual void renderAxisCircle3(VL_AXIS const& axis, float const& radius) = 0;
    virtual void renderAxisCircleCulled3(VL_AXIS const& axis, unsigned int const& name,
                                         Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                         float scale, float const& radius) = 0;
    virtual void renderAxisCircleCulledStipple3(VL_AXIS const& axis, unsigned int const& name,
                                                Vector3<float> const& viewDirection,
                                                Matrix4<float> const& frame, float scale,
                                                float const& radius) = 0;
    virtual void renderAxisCircle3(VL_AXIS const& axis, unsigned int const& name, float const& radius) = 0;
    virtual void renderAxisCircle3NoPicking(VL_AXIS const& axis, float const& radius) = 0;
    virtual void renderAxesCircleTape3(unsigned int const& nameX, unsigned int const& nameY,
                                       unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                       float const& radius, float const& width) = 0;
    virtual void renderAxisCircleStipple3(VL_AXIS const& axis, float const& radius) = 0;
    virtual void renderAxisCircleTape3(VL_AXIS const& axis, float const& radius, float const& width) = 0;

    // == Circles, quads and rhombi ==

    virtual void renderCircle3(float const& radius) = 0;
    virtual void renderCircleCameraFacing3(Matrix4<float> const& frame, Matrix3<float> const& unused,
                                           float scale, Color4<float> const& color, float const& radius) = 0;
    virtual void renderQuad3(unsigned int const& texture) = 0;
    virtual void renderRhombus3(unsigned int const& texture) = 0;
    virtual void renderRhombus3() = 0;
    virtual void renderCircleCulledStipple3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                            float const& radius) = 0;
    virtual void renderCircleCulled3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                     float const& radius) = 0;
    virtual void renderCircleTape3(float const& radius, float const& width) = 0;

    // == Arrows ==

    virtual void renderAxesArrow3(unsigned int const& nameX, unsigned int const& nameY,
                                  unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                  float const& size) = 0;
    virtual void renderAxesArrowStipple3(Tuple3<Color4<float>> const& colors, float const& size) = 0;
    virtual void renderAxesArrowStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                         unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                         float const& size) = 0;
    virtual void renderAxesPlane3(unsigned int const& nameXY, unsigned int const& nameYZ,
                                  unsigned int const& nameXZ, Tuple3<Color4<float>> const& colors,
                                  float const& size) = 0;
    virtual void renderAxisArrow3(VL_AXIS const& axis, unsigned int const& name, float const& size) = 0;
    virtual void renderAxisArrow3NoPicking(VL_AXIS const& axis, float const& size) = 0;
    virtual void renderAxisArrowStipple3(VL_AXIS const& axis, unsigned int const& name,
                                         float const& size) = 0;
    virtual void renderUnitArrow3() = 0;

    // == Ellipses ==

    virtual void renderEllipse3(Vector3<float> const& center, Vector3<float> const& u,
                                Vector3<float> const& v) = 0;
    virtual void renderEllipse3_XZ(Vector3<float> const& center, float const& a, float const& b) = 0;
    virtual void renderEllipse3_XY(Vector3<float> const& center, float const& a, float const& b) = 0;
    virtual void renderEllipse3_YZ(Vector3<float> const& center, float const& a, float const& b) = 0;

    // == Arrows between points ==

    virtual void renderArrow3(Vector3<float> const& from, Vector3<float> const& to, float const& headSize,
                              bool const& tailBox) = 0;
    /// The same under a picking name.
    virtual void renderArrow3(Vector3<float> const& from, Vector3<float> const& to, float const& headSize,
                              unsigned int const& name, bool const& tailBox);
    virtual void createBuffers_forRenderArrow3(Array<Vector3<float>> const& positions,
                                               Array<Vector3<float>> const& directions,
                                               Array<Color4<float>> const& colors, float scale,
                                               Array<Vector3<float>>& vertices,
                                               Array<unsigned int>& triangles, Array<unsigned int>& lines,
                                               Array<unsigned int>& quads,
                                               Array<Color4<float>>& vertexColors) = 0;
    virtual void renderArrow3_usingBuffers(Array<Vector3<float>> const& vertices,
                                           Array<unsigned int> const& triangles,
                                           Array<unsigned int> const& lines, Array<unsigned int> const& quads,
                                           Array<Color4<float>> const& vertexColors) = 0;
    virtual void renderArrow2(Vector2<float> const& from, Vector2<float> const& to, float const& size) = 0;
    /// The same under a picking name.
    virtual void renderArrow2(Vector2<float> const& from, Vector2<float> const& to, float const& size,
                              unsigned int const& name);

    // == Triangles, quads and points ==

    virtual void renderTriangle(Vector3<float> const& a, Vector3<float> const& b,
                                Vector3<float> const& c) = 0;
    virtual void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                                Vector3<float> const& normalA, Vector3<float> const& normalB,
                                Vector3<float> const& normalC) = 0;
    virtual void renderTriangleOptimized(Vector3<float> const& a, Vector3<float> const& b,
                                         Vector3<float> const& c) = 0;
    virtual void renderQuad3(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                             Vector3<float> const& d) = 0;
    virtual void renderPoint3(Vector3<float> const& p) = 0;
    virtual void renderPoint3(Vector3<float> const& p, unsigned int const& name);  ///< Under a picking name.
    virtual void renderPoint3_Begin() = 0;
    virtual void renderPoint3_End() = 0;
    virtual void renderPoint3_scoped(Vector3<float> const& p) = 0;
    /// Under a picking name. A name cannot change inside an open block of points, so this suits callers that
    /// open one per point.
    virtual void renderPoint3_scoped(Vector3<float> const& p, unsigned int const& name);
    virtual void renderPoint2(Vector2<float> const& p) = 0;
    virtual void renderPoint2(Vector2<float> const& p, unsigned int const& name);  ///< Under a picking name.
    virtual void renderCross3() = 0;

    // == Boxes ==

    /// A filled square from center - half to center + half.
    virtual void renderBox2(Vector2<float> const& center, float const& half);
    virtual void renderBox3(Vector3<float> const& center, float const& halfSize) = 0;

    /// A shaded sphere of 32 meridians and 16 parallels, made of triangles with smooth normals.
    virtual void renderSphere(Vector3<float> const& center, float const& radius);

    virtual void renderBox3Points_asPoints(Box3Points<float> const& points) = 0;
    virtual void renderBox3Points_asPoints(Box3Points<double> const& points) = 0;
    virtual void renderBox3Points_asPoints(Box3Points_ex<float> const& points) = 0;
    virtual void renderBox3Points_asPoints(Box3Points_ex<double> const& points) = 0;
    virtual void render(Box3<float> const& box, bool const& wire) const = 0;
    virtual void render(Box3<float> const& box, Tuple8<Vector3<float>> const& colors,
                        bool const& wire) const = 0;
    virtual void render(Box2<float> const& box, bool const& wire) = 0;
    virtual void render(Obb3<float> const& box, bool const& wire) = 0;

    // == Composed drawings ==

    /// The cell as a wire box, and its 64 samples as points in shades of gray.
    virtual void renderTricubicVoxel(TricubicVoxel<float> const& voxel);
    virtual void renderTricubicVoxel(TricubicVoxel<double> const& voxel);

    /// Each plane as a grid (renderPlane3) of side `size` with `divisions` cells a side.
    virtual void renderPlane3System(Plane3System<float> const& system, float const& size,
                                    unsigned int const& divisions);
    virtual void renderPlane3System(Plane3System<double> const& system, double const& size,
                                    unsigned int const& divisions);

    /// A regular tetrahedron with flat faces; its corners lie `size` away from the center, one of them
    /// along +Y.
    virtual void renderTetrahedron(Vector3<float> const& center, float const& size);

    /// The wire boxes of all nodes, from the root down, each once. Nodes without a parent, other than the
    /// root, and child indices out of range are skipped.
    virtual void renderTree(GeometryTree<GeometryNode<Box3<float>>>& tree);

    virtual void renderTetrahedron(Vector3<double> const& center, double const& size);
    virtual void render(Box2<double> const& box, bool const& wire) = 0;
    virtual void render(Box3<double> const& box, bool const& wire) const = 0;
    virtual void render(Box3<double> const& box, Tuple8<Vector3<float>> const& colors,
                        bool const& wire) const = 0;
    virtual void render(Obb3<double> const& box, bool const& wire) = 0;

    // == Triangle lists ==

    /// Triangles without normals.
    virtual void render(Array<Vector3<double>> const& vertices,
                        Array<Tuple3<unsigned int>> const& triangles) = 0;

    /// Flat-shaded triangles. Triangles whose index is out of range are skipped.
    virtual void render(Array<Vector3<float>> const& vertices, Array<Tuple3<unsigned int>> const& triangles);

    /// One segment per triangle, `length` long, from the centroid along the face normal. Triangles whose
    /// index is out of range or whose area is 0 are skipped.
    virtual void renderNormals(Array<Vector3<double>> const& vertices,
                               Array<Tuple3<unsigned int>> const& triangles, float const& length);

    /// Shaded and colored triangles.
    ///
    /// Normals and colors belong to the vertices; either array may be empty. Without both, triangles are
    /// shaded flat in the current color. With normals alone, they keep the current color; with both, a
    /// triangle has the mean color of its corners. With colors alone, the colors are interpolated over the
    /// triangles and no normals are sent, for drawing without lights. Triangles whose index is out of range
    /// of the vertices, or of an array that is not empty, are skipped. The current color is restored at the
    /// end.
    virtual void render(Array<Vector3<float>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                        Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors);
    virtual void render(Array<Vector3<double>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                        Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors);

    // == Viewports ==

    virtual Tuple4<unsigned int> getCurrentViewportCoords() const = 0;  ///< x, y, width, height in pixels.
    virtual void pushViewportOrtho(Tuple4<unsigned int> const& viewport, Tuple4<float> const& box) = 0;
    virtual void popViewportOrtho() = 0;

    virtual void renderAxisArrowStipple3(VL_AXIS const& axis, float const& size) = 0;

protected:
    // The lock word must come first.
    std::atomic<std::uint32_t> textureQueueLock{0};  // 0 free, 1 held; guards textureUnloadQueue
    Array<Color4<float>> colorStack;                 // the last entry is current; never empty
    Array<unsigned int> textureUnloadQueue;          // texture names that destroy_RL() deletes
    Camera_RL* camera = nullptr;                     // not owned; may be null

    // The other stacks, as the color stack. Only the top is a subclass's to write.
    Array<BlendingMode> blendingStack;
    Array<CullingMode> cullingStack;
    Array<DepthtTestMode> depthTestStack;
    Array<FillingMode> fillingFrontStack;
    Array<FillingMode> fillingBackStack;
    Array<float> lineWidthStack;  // pixels

private:
    float pointSize = 1.0F;   // pixels
    float headLength = 1.0F;  // world units
    bool isZBiased = false;
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free && sizeof(std::atomic<std::uint32_t>) == 4,
              "the texture queue is guarded by a plain 32-bit word");

}  // namespace vellum
