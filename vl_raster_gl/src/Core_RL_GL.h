#pragma once

#include "foundation/raster/Core_RL.h"
#include "raster_gl_export.h"

#include <string>
#include <vector>

namespace vellum {

/// The render layer on desktop OpenGL: render state, buffers, textures, and the drawings of primitives and
/// editing gizmos in immediate mode.
///
/// An application makes a context current, initializes GLEW and constructs one instance, which becomes the
/// render layer of the process (VL_Raster). It then draws through the abstract class; the renderers of
/// meshes and particles reach this instance through VL_Raster.
///
/// Use:
///
///     auto* layer = new Core_RL_GL;              // the context is current
///     layer->setCamera(&camera);
///     layer->setDepthTest({DEPTH_LESS, true});
///     layer->renderAxesArrow3(0, 1, 2, {RED, GREEN, BLUE}, 0.2F);
///     layer->destroy_RL();                       // deletes the textures that other threads queued
///     delete layer;
///
/// It does not open windows or create contexts, does not delete GL objects by itself, and reads GL's error
/// flag in getError() only. It caches no GL state beyond the stacks of Core_RL, so code that calls GL
/// directly must restore the state that it changes.
///
/// All operations must be called on the thread that owns the current context, except
/// queueUnloadTextureColor(), which any thread may call.
///
/// The `GL:` line of an operation lists its calls in order, the `State:` line the state that it leaves
/// changed; without such a line, all state is restored. Drawings use the current model-view matrix, color,
/// line width, point size, stipple and filling. They send their vertices in immediate mode and allocate no
/// memory. Lines that begin with Deliberate name an entry of docs/compatibility.md.
///
/// Groups, in the order of the interface: lifecycle and extensions; camera and point state; buffers and draw
/// calls; memory, shaders and errors; lighting and render state; textures and transforms; picking; segments
/// and planes; axis gizmos; circles, quads and rhombi; arrow gizmos; ellipses; arrows between points;
/// triangles, quads and points; boxes; triangle lists; viewports.
class VL_RASTER_GL_EXPORT Core_RL_GL : public Core_RL {
public:
    // Overloads of the base class that declarations of the same name would hide.
    using Core_RL::render;
    using Core_RL::renderArrow2;
    using Core_RL::renderArrow3;
    using Core_RL::renderPoint2;
    using Core_RL::renderPoint3;
    using Core_RL::renderPoint3_scoped;

    // == Lifecycle and extensions ==

    /// Makes this instance the render layer of the process: VL_Raster points at it until another instance is
    /// constructed.
    /// GL: none; the context may be made current later, before the first operation.
    Core_RL_GL();

    /// Deletes no GL object; textures that are still queued are leaked unless destroy_RL() was called.
    /// Deliberate (render-layer-pointer-stays): does not change VL_Raster, which may then dangle.
    /// GL: none.
    ~Core_RL_GL() override;

    /// Reads the driver's extensions into the list that isExtensionSupported() searches, sorted byte by byte.
    /// The list is read once: a context with other extensions needs a new instance. An extension string that
    /// ends with a blank adds an empty entry, which matches the empty name only.
    /// GL: glGetString(GL_EXTENSIONS), while the list is empty.
    void fillOpenGLExtensions();

    // == Camera and point state ==

    /// \return the previous size, as Core_RL::setPointSize() stores it.
    /// GL: glPointSize.  State: the point size.
    float setPointSize(float const& size) override;

    /// GL: glLineWidth.  State: the line width, and the top of its stack.
    void setLineWidth(float const& width) override;

    /// Whether the driver lists the extension; exact and case-sensitive. Null is never listed. The list is
    /// read on the first call, and on every call while the driver's string is empty.
    /// GL: glGetString(GL_EXTENSIONS), while the list is empty.
    bool isExtensionSupported(char const* name) override;

    // == Buffers and draw calls ==
    // GL: the call of the same name, with the same arguments in the same order. Enumerators have GL's values
    // and are passed unchanged. Counts, first indices and strides are narrowed to GL's 32 bits; byte sizes
    // and offsets stay pointer-sized.

    void begin(Primitive::type primitive) override;
    void end() override;
    void genBuffers(unsigned long count, unsigned int* ids) override;
    void deleteBuffers(unsigned long count, unsigned int* ids) override;
    void bindBuffer(BufferTarget::type target, unsigned int id) override;
    void bufferData(BufferTarget::type target, unsigned long size, void* data,
                    BufferUsage::type usage) override;
    void bufferSubData(BufferTarget::type target, void* offset, unsigned long size, void* data) override;
    void enableClientState(ClientCapability::type array) override;
    /// Deliberate (server-side-enable): glEnable, although the argument has the type of client arrays.
    void enable(ClientCapability::type capability) override;
    void disableClientState(ClientCapability::type array) override;
    void vertexPointer(int size, DataType::type type, unsigned long stride, void* pointer) override;
    void colorPointer(int size, DataType::type type, unsigned long stride, void* pointer) override;
    void drawElements(Primitive::type mode, unsigned long count, DataType::type type, void* indices) override;
    void drawArrays(Primitive::type mode, unsigned long first, unsigned long count) override;

    // == Memory, shaders and errors ==

    /// Video memory of the device in kilobytes, 0 if the driver does not report it. Only
    /// GL_NVX_gpu_memory_info reports it; GL_ATI_meminfo has no such query.
    /// GL: the extension queries (through the virtual isExtensionSupported()), glGetIntegerv(0x9048).
    unsigned int getTotalGpuMemory() override;

    /// Free video memory in kilobytes, 0 if it is unknown. Accelerator statistics of the operating system,
    /// where they exist, replace the value of the driver's extension.
    /// GL: the extension queries (through the virtual isExtensionSupported()), glGetIntegerv(0x9049).
    unsigned int getFreeGpuMemory() override;

    /// Whether the driver's major version is 2 or later. The major version is the number before the first
    /// point of the version; with an empty or missing version the answer is false.
    /// GL: glGetString(GL_VERSION).
    bool checkShaderSupport() const override;

    // GL: as under 'Buffers and draw calls'.

    unsigned int createShader(ShaderType::type type) override;
    void shaderSource(unsigned int shader, unsigned long count, char const** strings, int* lengths) override;
    void compileShader(unsigned int shader) override;
    void attachShader(unsigned int program, unsigned int shader) override;
    unsigned int createProgram() override;
    int getAttribLocation(unsigned int program, char* name) override;
    int getUniformLocation(unsigned int program, char* name) override;
    void linkProgram(unsigned int program) override;
    void useProgram(unsigned int program) override;

    /// Writes the log of a shader that failed to compile, followed by `name`, to standard output. Writes no
    /// text after a success or if the log is empty.
    /// Deliberate (null-log-name): a null name sets the stream's bad bit.
    /// GL: glGetShaderiv of GL_COMPILE_STATUS and GL_INFO_LOG_LENGTH, then glGetShaderInfoLog.
    void checkShaderCompilationErrors(unsigned int shader, char const* name) override;

    /// The same for a program that failed to link, with two names after the log.
    /// Deliberate (width-in-link-log): the line between the names reads "width:".
    /// GL: glGetProgramiv of GL_LINK_STATUS and GL_INFO_LOG_LENGTH, then glGetProgramInfoLog.
    void checkProgramLinkageErrors(unsigned int program, char const* name, char const* other) override;

    /// GL: glProgramParameteriEXT. The caller checks that the driver has GL_EXT_geometry_shader4.
    void programParameterI(unsigned int program, ShaderParameterName::type parameter, int value) override;

    void detachShader(unsigned int program, unsigned int shader) override;
    void deleteShader(unsigned int shader) override;
    void deleteProgram(unsigned int program) override;

    /// Reads the error flag once. Without an error it returns false and does not change `message`. The
    /// library itself uses the other overload.
    ///
    /// Deliberate (endless-error-loop): with an error it stores the code and the error's name and does not
    /// return.
    /// GL: glGetError, once.
    bool getError(VL_String& message, int& code) override;

    /// Clears all pending errors of the context. The arguments name the caller's position in the source, for
    /// a debugger; they are not printed.
    /// \return whether there was an error.
    /// GL: glGetError until it returns GL_NO_ERROR.
    bool getError(char const* where, int line) override;

    // GL: as under 'Buffers and draw calls'.
    // Deliberate (core-point-parameters): not the entry points of the extension in their names.

    void uniform1f(int location, float x) override;
    void uniform3f(int location, float x, float y, float z) override;
    void hint(HintTarget::type target, HintMode::type mode) override;
    void pointParameterfvEXT(PointParameterName::type parameter, float* values) override;
    void pointParameterfEXT(PointParameterName::type parameter, float value) override;
    void* mapBuffer(BufferTarget::type target, BufferAccess::type access) override;
    void unmapBuffer(BufferTarget::type target) override;

    // == Lighting and render state ==

    /// The model-view matrix, column by column.
    /// GL: glMatrixMode(GL_MODELVIEW), glGetFloatv(GL_MODELVIEW_MATRIX).  State: the matrix mode.
    Matrix4<float> getModelViewMatrix_asFloat() const override;
    /// The same matrix row by row, with the same calls.
    Matrix4<float> getModelViewTransposedMatrix_asFloat() const override;

    // GL: glEnable or glDisable of the capability in the name.  State: that capability.

    void enableLighting() override;
    void disableLighting() override;
    void enableLight_0() override;
    void disableLight_0() override;
    void enableLight_1() override;
    void disableLight_1() override;
    void enableColorMaterial() override;
    void disableColorMaterial() override;

    // State: the value in the name, and the top of its stack (Core_RL, "State"). The stipple has no stack.

    /// Writes the stack before it calls GL.
    /// GL: glColor4f.
    void setColor(Color4<float> const& color) override;

    /// GL: glPolygonMode(GL_FRONT, ...): GL_FILL for 0, GL_LINE for every other value.
    void setFillingFront(FillingMode const& mode) override;
    /// GL: glPolygonMode(GL_BACK, ...), with the same values.
    void setFillingBack(FillingMode const& mode) override;

    /// Dashes of three pixels on, three off.
    /// GL: on: glLineStipple(3, 0xAAAA), glEnable(GL_LINE_STIPPLE); off: glDisable(GL_LINE_STIPPLE).
    void setLineStipple(bool on) override;

    /// Other values than 0 and 1 change neither the blending nor its stack.
    /// GL: 1: glEnable(GL_BLEND), glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA); 0: glDisable(GL_BLEND).
    void setBlending(BlendingMode const& mode) override;

    /// Mode 0 enables the test with GL_ALWAYS, so that depth can be written; modes above 7 set the depth mask
    /// only, and keep the mode on the stack.
    /// GL: glDepthMask; then glDisable(GL_DEPTH_TEST) for mode 1, else glEnable(GL_DEPTH_TEST), glDepthFunc.
    void setDepthTest(DepthtTestMode const& mode) override;

    /// GL: glEnable or glDisable of GL_CULL_FACE; then, in both cases, glCullFace.
    void setCulling(CullingMode const& mode) override;

    // == Textures and transforms ==

    unsigned int createTexture() override;                      ///< GL: glGenTextures.
    void destroyTexture(unsigned int const& texture) override;  ///< GL: glDeleteTextures.
    /// Creates `count` names; the array grows only if its capacity is too small.  GL: glGenTextures.
    void createTextures(unsigned int const& count, Array<unsigned int>& textures) override;
    void destroyTextures(Array<unsigned int> const& textures) override;  ///< GL: glDeleteTextures.

    /// GL: glMatrixMode(GL_MODELVIEW), glLoadMatrixd / glLoadMatrixf.
    /// State: the model-view matrix; GL_MODELVIEW selected, as after the next two.
    void setTransform(Matrix4<double> const& matrix) override;
    void setTransform(Matrix4<float> const& matrix) override;
    /// GL: glMatrixMode(GL_MODELVIEW), glPushMatrix, glMultMatrixd / glMultMatrixf. popTransform() ends it.
    void pushTransform(Matrix4<double> const& matrix) override;
    void pushTransform(Matrix4<float> const& matrix) override;
    /// GL: glMatrixMode(GL_MODELVIEW), glPopMatrix.
    void popTransform() override;

    /// Uploads `width` x `height` luminances to a texture and leaves it enabled and bound. With `blend` the
    /// luminance blends the current color to white. Without, the mode is GL_DECAL, which GL leaves undefined
    /// for luminance textures (Mesa shows the current color). createTexture() creates the name and
    /// popTextureLuminance() deletes it, so each push needs a new one.
    /// \param values row by row, at least width x height of them, or empty for undefined contents.
    /// GL: glEnable(GL_TEXTURE_2D), glBindTexture, glPixelStoref, glTexImage2D, glTexParameteri x 4,
    /// glTexEnvfv and glTexEnvf, or glTexEnvf alone.
    /// State: the bound texture, texturing enabled, the texture environment, the unpack alignment.
    void pushTextureLuminance(unsigned int const& texture, unsigned int const& width,
                              unsigned int const& height, bool const& blend,
                              Array<float> const& values) override;
    /// GL: glDeleteTextures, glTexEnvf(GL_MODULATE), glDisable(GL_TEXTURE_2D).
    void popTextureLuminance(unsigned int const& texture) override;

    /// Creates a texture from 8-bit RGBA pixels, with mipmaps, and sets `texture` to its name. Clamping modes
    /// above 3 set no wrap mode.
    ///
    /// Deliberate (wrap-mode-2): clamping mode 2 passes 2.0 as the wrap mode, which GL rejects with
    /// GL_INVALID_ENUM.
    /// GL: glEnable(GL_TEXTURE_2D), glGenTextures, glBindTexture, glTexEnvf, glPixelStoref,
    /// glTexParameterf of both filters and both wrap modes, gluBuild2DMipmaps, glDisable(GL_TEXTURE_2D).
    /// State: the bound texture, the texture environment (GL_MODULATE), the unpack alignment (1).
    void loadTextureColor(unsigned int const& width, unsigned int const& height, unsigned char const* pixels,
                          unsigned int& texture, TextureClampingMode const& clamping) override;

    /// The same from pixels of 3 or 4 channels of 8, 16 or 32 (float) bits. For any other layout, and for a
    /// channel width below 1, the texture has a name but no image.
    void loadTextureColor(unsigned int const& width, unsigned int const& height, int const& bitsPerChannel,
                          int const& bitsPerPixel, void const* pixels, unsigned int& texture,
                          TextureClampingMode const& clamping) override;

    /// GL: glEnable(GL_TEXTURE_2D), glDeleteTextures, glTexEnvf(GL_MODULATE), glDisable(GL_TEXTURE_2D).
    void unLoadTextureColor(unsigned int const& texture) override;
    /// GL: glEnable(GL_TEXTURE_2D), glBindTexture.  State: both; disableTextureColor() ends it.
    void activateTextureColor(unsigned int const& texture) override;
    void disableTextureColor() override;  ///< GL: glDisable(GL_TEXTURE_2D).

    /// Queues a texture for destroy_RL() and sets the name to 0xFFFFFFFF, so that it cannot be queued twice;
    /// that value itself is not queued. Any thread may call it; a spin lock guards the queue. If growing the
    /// queue throws, the lock is released and `texture` is unchanged.
    /// GL: none.
    void queueUnloadTextureColor(unsigned int& texture) override;

    /// Deletes every queued texture, in the order of the queue, and empties the queue. The lock is held
    /// meanwhile and is not reentrant, so unLoadTextureColor() must not queue textures.
    ///
    /// Deliberate (queue-drained-by-last-layer): calls unLoadTextureColor() of VL_Raster, not of this
    /// instance.
    /// GL: glEnable(GL_TEXTURE_2D), glDeleteTextures, glTexEnvf(GL_MODULATE), glDisable(GL_TEXTURE_2D) per
    /// texture.
    void destroy_RL() override;

    // == Picking ==

    void loadName(unsigned int name) override;  ///< GL: glLoadName.

    // == Segments and planes ==

    /// The segment from center - direction * halfLength to the center.
    ///
    /// Deliberate (half-stroke): sends center + direction * halfLength as a third vertex, which GL_LINES
    /// drops.
    void renderStroke3(Vector3<float> const& center, Vector3<float> const& direction,
                       float const& halfLength) override;
    void renderSegment2(Vector2<float> const& a, Vector2<float> const& b) override;

    /// A square grid in the plane, around its point nearest to the origin: `divisions` cells along each side
    /// of length `size`. 0 divisions draw one line of each family, along an edge of the square.
    void renderPlane3(Plane3<float> const& plane, float const& size, unsigned int const& divisions) override;
    void renderSegment3(Vector3<float> const& a, Vector3<float> const& b) override;
    /// The virtual renderSegment3() between setLineStipple(true) and setLineStipple(false).
    void renderSegmentStipple3(Vector3<float> const& a, Vector3<float> const& b) override;

    // == Axis gizmos ==
    // The handles of the editing tools in unit size: the handle of an axis extends from the origin to 1 on
    // it. Each is drawn under a picking name, so that GL selection reports the handle that was hit. Sets of
    // handles push a color per handle and pop all of them at the end. Axis values without a handle are not
    // drawn.

    /// A filled cube of half edge `halfSize` about the origin.
    /// GL: glPolygonMode x 2, glLoadName, glColor4f, the box, and the state restored.
    void renderBox3(unsigned int const& name, Color4<float> const& color, float const& halfSize) override;

    /// The scale handles of the three axes.
    void renderAxesBox3(unsigned int const& nameX, unsigned int const& nameY, unsigned int const& nameZ,
                        Tuple3<Color4<float>> const& colors, float const& size) override;
    /// The same with the cube at the center.
    void renderAxesBox3(unsigned int const& nameX, unsigned int const& nameY, unsigned int const& nameZ,
                        unsigned int const& nameCenter, Tuple4<Color4<float>> const& colors,
                        float const& size) override;

    /// One scale handle: a filled cube of half edge `size` that ends at 1 on the axis, and a segment from the
    /// origin to it; axis 3 is the center, a cube without a segment. In the first overload the axis is the
    /// picking name.
    /// GL: glPolygonMode x 2, glLoadName, glPushMatrix, glTranslatef, glRotatef, the box, glPopMatrix, the
    /// segment, and the state restored.
    void renderAxisBox3(VL_AXIS const& axis, float const& size) override;
    void renderAxisBox3(VL_AXIS const& axis, unsigned int const& name, float const& size) override;

    /// The dashed circles of the three axes.
    ///
    /// Deliberate (names-as-axes): the names serve as axes and must be 0, 1, 2; others draw no circle.
    void renderAxesCircleStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                  unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                  float const& radius) override;
    /// The circles of the three axes.
    void renderAxesCircle3(unsigned int const& nameX, unsigned int const& nameY, unsigned int const& nameZ,
                           Tuple3<Color4<float>> const& colors, float const& radius) override;

    /// The rotate gizmo: the halves of the three circles that face the viewer.
    /// \param viewDirection the viewing direction, in the space that `frame` transforms to.
    /// \param frame the gizmo's position and orientation. It transforms the points, not the model-view
    ///     matrix.
    /// \param scale applied to the circles before `frame`.
    void renderAxesCircleCulled3(unsigned int const& nameX, unsigned int const& nameY,
                                 unsigned int const& nameZ, Vector3<float> const& viewDirection,
                                 Matrix4<float> const& frame, float scale,
                                 Tuple3<Color4<float>> const& colors, float const& radius) override;
    /// The same, with the far halves in lines of width 1.
    void renderAxesCircleCulledStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                        unsigned int const& nameZ, Vector3<float> const& viewDirection,
                                        Matrix4<float> const& frame, float scale,
                                        Tuple3<Color4<float>> const& colors, float const& radius) override;

    /// One axis's circle; without a name in the arguments, the axis is the picking name.
    /// GL: glLoadName; for Z the circle; for X and Y glPushMatrix, glRotatef, the circle, glPopMatrix.
    void renderAxisCircle3(VL_AXIS const& axis, float const& radius) override;
    /// One axis's half circle under a name (see renderAxesCircleCulled3). Pushes no color.
    void renderAxisCircleCulled3(VL_AXIS const& axis, unsigned int const& name,
                                 Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                 float scale, float const& radius) override;
    void renderAxisCircleCulledStipple3(VL_AXIS const& axis, unsigned int const& name,
                                        Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                        float scale, float const& radius) override;
    void renderAxisCircle3(VL_AXIS const& axis, unsigned int const& name, float const& radius) override;
    void renderAxisCircle3NoPicking(VL_AXIS const& axis, float const& radius) override;

    /// The tape rings of the three axes.
    ///
    /// Deliberate (names-as-axes): the names serve as axes and must be 0, 1, 2; others draw no ring.
    void renderAxesCircleTape3(unsigned int const& nameX, unsigned int const& nameY,
                               unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                               float const& radius, float const& width) override;
    /// One axis's circle, dashed.
    void renderAxisCircleStipple3(VL_AXIS const& axis, float const& radius) override;
    /// One axis's ring of four quarter tapes, under the axis as picking name.
    void renderAxisCircleTape3(VL_AXIS const& axis, float const& radius, float const& width) override;

    // == Circles, quads and rhombi ==

    /// A circle in the XY plane around the origin: a loop of 360 points, one per degree.
    void renderCircle3(float const& radius) override;

    /// A circle at the origin of `frame` that always faces the screen: rotation and scale of the model-view
    /// matrix are dropped, then `scale` is applied. The Matrix3 is not used.
    ///
    /// Deliberate (twice-drawn-circle): draws through the virtual renderCircle3() and then once more
    /// directly.
    /// GL: glColor4f, glPushMatrix, glMultMatrixf, glGetFloatv, glLoadMatrixf, glScalef, two loops,
    /// glPopMatrix, glColor4f.
    void renderCircleCameraFacing3(Matrix4<float> const& frame, Matrix3<float> const& unused, float scale,
                                   Color4<float> const& color, float const& radius) override;

    /// A textured square from -1 to 1 in the XY plane.
    /// GL: glEnable(GL_TEXTURE_2D), glBindTexture, the polygon, glDisable(GL_TEXTURE_2D).
    void renderQuad3(unsigned int const& texture) override;
    /// A textured square that stands on a corner.
    void renderRhombus3(unsigned int const& texture) override;
    void renderRhombus3() override;

    /// The half of a circle that faces the viewer and, in lines of width 1, the half that faces away.
    ///
    /// Deliberate (solid-far-half): despite the name, neither half is dashed.
    void renderCircleCulledStipple3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                    float const& radius) override;

    /// The half of a circle that faces the viewer; if the circle is seen face-on, the whole circle.
    ///
    /// Deliberate (one-degree-gap): the segment from the last point to the first is missing.
    void renderCircleCulled3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                             float const& radius) override;

    /// A quarter of a band of height `width` along Z that follows the circle from 5 to 85 degrees, with a
    /// pointed cap at each end.
    ///
    /// Deliberate (tape-cap-factors): the last cap differs from the first in the last digits.
    void renderCircleTape3(float const& radius, float const& width) override;

    // == Arrow gizmos ==

    /// The move handles of the three axes.
    void renderAxesArrow3(unsigned int const& nameX, unsigned int const& nameY, unsigned int const& nameZ,
                          Tuple3<Color4<float>> const& colors, float const& size) override;
    void renderAxesArrowStipple3(Tuple3<Color4<float>> const& colors, float const& size) override;
    void renderAxesArrowStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                 unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                 float const& size) override;

    /// The plane handles: three filled squares of side `size` at the origin, in XY, YZ and XZ.
    void renderAxesPlane3(unsigned int const& nameXY, unsigned int const& nameYZ, unsigned int const& nameXZ,
                          Tuple3<Color4<float>> const& colors, float const& size) override;

    /// One move handle: a cone from 0.9 on the axis, `size` high, and a segment from the origin to 1. Any
    /// other axis value only loads the name.
    /// GL: glPolygonMode x 2, gluNewQuadric, glLoadName, glPushMatrix, glTranslatef, glRotatef, gluCylinder,
    /// glPopMatrix, the segment, gluDeleteQuadric, and the state restored.
    void renderAxisArrow3(VL_AXIS const& axis, unsigned int const& name, float const& size) override;
    void renderAxisArrow3NoPicking(VL_AXIS const& axis, float const& size) override;
    void renderAxisArrowStipple3(VL_AXIS const& axis, unsigned int const& name, float const& size) override;

    /// An arrow of lines along -Y with its tip at -1.2, for gizmos under a scaled matrix.
    void renderUnitArrow3() override;

    // == Ellipses ==
    // A strip of 30 points. Deliberate (open-ellipse): the last one lands just short of the first.

    /// The ellipse center + u sin t + v cos t.
    void renderEllipse3(Vector3<float> const& center, Vector3<float> const& u,
                        Vector3<float> const& v) override;
    /// Ellipses in the planes of the axes, with half axes `a` and `b`.
    /// GL: glPushMatrix, glTranslated, the strip, glPopMatrix.
    void renderEllipse3_XZ(Vector3<float> const& center, float const& a, float const& b) override;
    void renderEllipse3_XY(Vector3<float> const& center, float const& a, float const& b) override;
    void renderEllipse3_YZ(Vector3<float> const& center, float const& a, float const& b) override;

    // == Arrows between points ==

    /// A shaded arrow: a segment, a four-sided head of length `headSize` (at most a third of the arrow) and
    /// optionally a box at the tail. An arrow shorter than a 10,000th of its head is skipped. The head's base
    /// has 0.75 of the current color.
    void renderArrow3(Vector3<float> const& from, Vector3<float> const& to, float const& headSize,
                      bool const& tailBox) override;

    /// Fills arrays for renderArrow3_usingBuffers(): one arrow from each position, along directions[i] *
    /// scale. Arrows beyond the last color have the last color; without colors all are light blue. Heads are
    /// a third of their arrow. A direction of length zero gives NaN corners.
    ///
    /// Deliberate (arrow-base-shades): bases have 0.8 of the color, where renderArrow3() has 0.75.
    ///
    /// The number of arrows is the smaller of the two counts. More than 357,913,941 arrows, whose indices
    /// exceed 32 bits, give empty arrays.
    ///
    /// The outputs are overwritten: 10 vertices and colors, 12 triangle, 2 line and 4 quad indices per arrow.
    /// They must not be the inputs. Memory is allocated only if the capacity of an output is too small. More
    /// than a million arrows are made on several cores, with the same bytes, unless setThreadLimit(1) or
    /// VL_THREADS=1 say otherwise.
    /// GL: none.
    void createBuffers_forRenderArrow3(Array<Vector3<float>> const& positions,
                                       Array<Vector3<float>> const& directions,
                                       Array<Color4<float>> const& colors, float scale,
                                       Array<Vector3<float>>& vertices, Array<unsigned int>& triangles,
                                       Array<unsigned int>& lines, Array<unsigned int>& quads,
                                       Array<Color4<float>>& vertexColors) override;

    /// Draws the arrays of createBuffers_forRenderArrow3() through the virtual operations of VL_Raster. Alpha
    /// is not used. The arrays are client memory: no buffer object may be bound.
    /// GL: glPolygonMode x 2, glEnableClientState x 2, glVertexPointer, glColorPointer, glDrawElements x 3,
    /// glDisableClientState x 2, and the state restored.
    void renderArrow3_usingBuffers(Array<Vector3<float>> const& vertices,
                                   Array<unsigned int> const& triangles, Array<unsigned int> const& lines,
                                   Array<unsigned int> const& quads,
                                   Array<Color4<float>> const& vertexColors) override;

    /// A flat arrow with two barbs, each `size` times as long as the arrow.
    void renderArrow2(Vector2<float> const& from, Vector2<float> const& to, float const& size) override;

    // == Triangles, quads and points ==

    /// A triangle with its face normal, or with a normal per vertex. A triangle of area 0 has a NaN normal.
    void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) override;
    void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                        Vector3<float> const& normalA, Vector3<float> const& normalB,
                        Vector3<float> const& normalC) override;
    /// Without glBegin and glEnd: the caller opens a block of GL_TRIANGLES for many triangles.
    void renderTriangleOptimized(Vector3<float> const& a, Vector3<float> const& b,
                                 Vector3<float> const& c) override;
    void renderQuad3(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                     Vector3<float> const& d) override;
    void renderPoint3(Vector3<float> const& p) override;
    void renderPoint3_Begin() override;  ///< GL: glBegin(GL_POINTS); renderPoint3_End() ends it.
    void renderPoint3_End() override;    ///< GL: glEnd.
    void renderPoint3_scoped(Vector3<float> const& p) override;  ///< GL: glVertex3fv.
    void renderPoint2(Vector2<float> const& p) override;
    void renderCross3() override;  ///< Three segments through the origin, from 1 to -1 on each axis.

    // == Boxes ==

    void renderBox3(Vector3<float> const& center, float const& halfSize) override;  ///< A filled cube.

    /// The points of the lattice in one block of GL_POINTS, z varying fastest.
    void renderBox3Points_asPoints(Box3Points<float> const& points) override;
    void renderBox3Points_asPoints(Box3Points<double> const& points) override;
    void renderBox3Points_asPoints(Box3Points_ex<float> const& points) override;
    void renderBox3Points_asPoints(Box3Points_ex<double> const& points) override;

    /// A box: six quads, each corner with the face's normal (after its color, in the second overload); with
    /// `wire`, its edges.
    ///
    /// The overloads for double convert to float and call the virtual overload for float.
    /// GL: one glBegin(GL_QUADS) block; with `wire` GL_LINES, each face's first corner sent a fifth time, so
    /// that the thirty vertices pair up to the twelve edges.
    void render(Box3<float> const& box, bool const& wire) const override;
    void render(Box3<float> const& box, Tuple8<Vector3<float>> const& colors,
                bool const& wire) const override;

    /// A rectangle.
    ///
    /// Deliberate (two-edge-rectangle): with `wire`, only the lower and the upper edge.
    void render(Box2<float> const& box, bool const& wire) override;

    /// An oriented box, with the calls of the upright one.
    ///
    /// Deliberate (upright-box-normals): the normals are not rotated.
    void render(Obb3<float> const& box, bool const& wire) override;

    void render(Box2<double> const& box, bool const& wire) override;
    void render(Box3<double> const& box, bool const& wire) const override;
    void render(Box3<double> const& box, Tuple8<Vector3<float>> const& colors,
                bool const& wire) const override;
    void render(Obb3<double> const& box, bool const& wire) override;

    // == Triangle lists ==

    /// Indices are not checked: each must be in range. No buffer object may be bound.
    /// GL: glEnableClientState(GL_VERTEX_ARRAY), glVertexPointer, glDrawElements, glDisableClientState.
    void render(Array<Vector3<double>> const& vertices,
                Array<Tuple3<unsigned int>> const& triangles) override;

    /// See Core_RL::render().
    void render(Array<Vector3<float>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) override;
    void render(Array<Vector3<double>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) override;

    // == Viewports ==

    /// GL: glGetIntegerv(GL_VIEWPORT).
    Tuple4<unsigned int> getCurrentViewportCoords() const override;

    /// Opens an overlay: a viewport in pixels that shows the orthographic `box`. popViewportOrtho() ends it
    /// and selects GL_MODELVIEW. State of the saved attribute groups that changes inside the overlay is
    /// restored; other state, such as lighting, is not.
    ///
    /// Deliberate (viewport-attribute-mask): the mask is 0x0BA2, the value of GL_VIEWPORT, which selects the
    /// viewport, depth-buffer, accumulation-buffer, fog, pixel-mode and point groups.
    /// GL: glPushAttrib, glViewport, glMatrixMode(GL_PROJECTION), glPushMatrix, glLoadIdentity, glOrtho,
    /// glMatrixMode(GL_MODELVIEW), glPushMatrix, glLoadIdentity.
    void pushViewportOrtho(Tuple4<unsigned int> const& viewport, Tuple4<float> const& box) override;
    /// GL: glPopMatrix, glMatrixMode(GL_PROJECTION), glPopMatrix, glPopAttrib, glMatrixMode(GL_MODELVIEW).
    void popViewportOrtho() override;

    /// One move handle, dashed and without a picking name.
    void renderAxisArrowStipple3(VL_AXIS const& axis, float const& size) override;

private:
    std::vector<std::string> extensions;  // sorted; empty until the first query
};

}  // namespace vellum
