#pragma once

#include "foundation/raster/Core_RL.h"
#include "raster_gl_export.h"

#include <string>
#include <vector>

namespace vellum {

/// The render layer on desktop OpenGL: render state, buffers, textures, and every drawing of primitives and
/// editing gizmos, in immediate mode.
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
/// What it does not do: it opens no window and makes no context; it deletes no GL object by itself; it does
/// not look at GL's error flag except in getError(). It keeps no copy of GL's state beyond the stacks of
/// Core_RL, so code that changes GL behind its back restores what it changed.
///
/// All operations must be called on the thread that owns the current context, except
/// queueUnloadTextureColor(), which any thread may call.
///
/// Each operation's `GL:` line lists its calls in order, its `State:` line what it leaves changed; where
/// there is no such line, nothing. Drawings use the current model-view frame, color, line width, point size,
/// stipple and filling, send their vertices in immediate mode and allocate nothing.
///
/// Groups, in the order of the interface: lifecycle and extensions; camera and point state; buffers and draw
/// calls; memory, shaders and errors; lighting and render state; textures and transforms; picking; segments
/// and planes; axis gizmos; circles, quads and rhombi; arrow gizmos; ellipses; arrows between points;
/// triangles, quads and points; boxes; triangle lists; viewports.
class VL_RASTER_GL_EXPORT Core_RL_GL : public Core_RL {
public:
    // Operations of the base that stand beside overloads of this class.
    using Core_RL::render;
    using Core_RL::renderArrow2;
    using Core_RL::renderArrow3;
    using Core_RL::renderPoint2;
    using Core_RL::renderPoint3;
    using Core_RL::renderPoint3_scoped;

    // == Lifecycle and extensions ==

    /// Becomes the render layer of the process: VL_Raster points at it from here on, in place of any earlier
    /// instance. A later instance takes over in turn.
    /// GL: none; the context may be made current later, before the first operation.
    Core_RL_GL();

    /// Deliberate (render-layer-pointer-stays): leaves VL_Raster alone. Code that still draws through the
    /// pointer after this has lost its render layer, whichever instance it was. Deletes no GL object;
    /// textures that are still queued are lost unless destroy_RL() was called.
    /// GL: none.
    ~Core_RL_GL() override;

    /// Reads the driver's extensions into the list that isExtensionSupported() searches, sorted byte by
    /// byte. Does nothing while the list is not empty: it is never refreshed, and a context with other
    /// extensions needs a new instance. An extension string that ends with a blank leaves an empty entry,
    /// which matches no query but the empty name.
    /// GL: glGetString(GL_EXTENSIONS), while the list is empty.
    void fillOpenGLExtensions();

    // == Camera and point state ==

    /// \return the size it replaces, as Core_RL::setPointSize() keeps it.
    /// GL: glPointSize.  State: the point size.
    float setPointSize(float const& size) override;

    /// GL: glLineWidth.  State: the line width, and the top of its stack.
    void setLineWidth(float const& width) override;

    /// Whether the driver lists the extension; exact and case-sensitive. Null is never listed. The list is
    /// read on the first call; while the driver's string is empty, on every call.
    /// GL: glGetString(GL_EXTENSIONS) as fillOpenGLExtensions() needs it.
    bool isExtensionSupported(char const* name) override;

    // == Buffers and draw calls ==
    // GL: the call of the same name, with the same arguments in the same order. Enumerations carry GL's own
    // values and are passed unchanged. Counts, first indices and strides are narrowed to GL's 32 bits; byte
    // sizes and offsets stay pointer-sized.

    void begin(Primitive::type primitive) override;
    void end() override;
    void genBuffers(unsigned long count, unsigned int* ids) override;
    void deleteBuffers(unsigned long count, unsigned int* ids) override;
    void bindBuffer(BufferTarget::type target, unsigned int id) override;
    void bufferData(BufferTarget::type target, unsigned long size, void* data,
                    BufferUsage::type usage) override;
    void bufferSubData(BufferTarget::type target, void* offset, unsigned long size, void* data) override;
    void enableClientState(ClientCapability::type array) override;
    /// Deliberate (server-side-enable): glEnable, a server-side enable, although the argument has the type of
    /// client arrays.
    void enable(ClientCapability::type capability) override;
    void disableClientState(ClientCapability::type array) override;
    void vertexPointer(int size, DataType::type type, unsigned long stride, void* pointer) override;
    void colorPointer(int size, DataType::type type, unsigned long stride, void* pointer) override;
    void drawElements(Primitive::type mode, unsigned long count, DataType::type type, void* indices) override;
    void drawArrays(Primitive::type mode, unsigned long first, unsigned long count) override;

    // == Memory, shaders and errors ==

    /// Video memory of the device in kilobytes, 0 when the driver does not tell. Only
    /// GL_NVX_gpu_memory_info tells; GL_ATI_meminfo has no query for it.
    /// GL: the extension queries (through the virtual isExtensionSupported()), glGetIntegerv(0x9048).
    unsigned int getTotalGpuMemory() override;

    /// Free video memory in kilobytes, 0 when nothing tells. The accelerator statistics of an operating
    /// system that keeps them replace what the driver's extension says.
    /// GL: the extension queries (through the virtual isExtensionSupported()), glGetIntegerv(0x9049).
    unsigned int getFreeGpuMemory() override;

    /// Whether the driver is of major version 2 or later, as the characters before the version's first point
    /// say. An empty or missing version counts as none.
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

    /// Writes the log of a shader that failed to compile, with `name` under it, to standard output. Writes
    /// nothing after a success or when the log, its terminating zero counted, is shorter than 2.
    /// A null name puts the stream into its bad state, as inserting a null text does; nothing more is written
    /// to it until the caller clears it.
    /// GL: glGetShaderiv of GL_COMPILE_STATUS and GL_INFO_LOG_LENGTH, then glGetShaderInfoLog.
    void checkShaderCompilationErrors(unsigned int shader, char const* name) override;

    /// The same for a program that failed to link, with two names under the log.
    /// GL: glGetProgramiv of GL_LINK_STATUS and GL_INFO_LOG_LENGTH, then glGetProgramInfoLog.
    void checkProgramLinkageErrors(unsigned int program, char const* name, char const* other) override;

    /// GL: glProgramParameteriEXT; its driver support is the caller's to check (GL_EXT_geometry_shader4).
    void programParameterI(unsigned int program, ShaderParameterName::type parameter, int value) override;

    void detachShader(unsigned int program, unsigned int shader) override;
    void deleteShader(unsigned int shader) override;
    void deleteProgram(unsigned int program) override;

    /// Reads the error flag once. Without an error it returns false and leaves `message` alone.
    ///
    /// Deliberate (endless-error-loop): with an error it stores the code and the error's name, and does not
    /// return: it goes on examining the code it has read, without reading the flag again. A debugger finds
    /// the program standing at its first error. Everything else uses the other overload.
    /// GL: glGetError, once.
    bool getError(VL_String& message, int& code) override;

    /// Takes all pending errors off the context and tells whether there were any. The arguments name the
    /// caller's place in the source, for a debugger; they are not printed.
    /// GL: glGetError until it answers GL_NO_ERROR.
    bool getError(char const* where, int line) override;

    // GL: as under 'Buffers and draw calls'; the point parameters use the core entry points, despite
    // their names.

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

    /// The color stack is written first.
    /// GL: glColor4f.
    void setColor(Color4<float> const& color) override;

    /// GL: glPolygonMode(GL_FRONT, ...): GL_FILL for 0, GL_LINE for everything else.
    void setFillingFront(FillingMode const& mode) override;
    /// GL: glPolygonMode(GL_BACK, ...), alike.
    void setFillingBack(FillingMode const& mode) override;

    /// Dashes of three pixels on, three off.
    /// GL: on: glLineStipple(3, 0xAAAA), glEnable(GL_LINE_STIPPLE); off: glDisable(GL_LINE_STIPPLE).
    void setLineStipple(bool on) override;

    /// Values other than 0 and 1 leave the blending as it is, on its stack too.
    /// GL: 1: glEnable(GL_BLEND), glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA); 0: glDisable(GL_BLEND).
    void setBlending(BlendingMode const& mode) override;

    /// Mode 0 keeps the test enabled and lets every fragment pass, so that depth can be written; modes above
    /// 7 set the depth mask only, and keep the mode on the stack.
    /// GL: glDepthMask; then glDisable(GL_DEPTH_TEST) for mode 1, else glEnable(GL_DEPTH_TEST), glDepthFunc.
    void setDepthTest(DepthtTestMode const& mode) override;

    /// GL: glEnable or glDisable of GL_CULL_FACE; then, in both cases, glCullFace.
    void setCulling(CullingMode const& mode) override;

    // == Textures and transforms ==

    unsigned int createTexture() override;                      ///< GL: glGenTextures.
    void destroyTexture(unsigned int const& texture) override;  ///< GL: glDeleteTextures.
    /// Makes `count` names; the array grows only when its capacity is too small.  GL: glGenTextures.
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

    /// Gives a texture `width` x `height` luminances and leaves it enabled and bound, to be drawn over what is
    /// there. With `blend` the current color turns to white by the luminance. Without, the mode is GL_DECAL,
    /// whose effect on luminances GL leaves to the driver (Mesa shows the current color alone). The name comes
    /// from createTexture(); popTextureLuminance() deletes it, so each push needs a fresh one.
    /// \param values row by row, at least width x height of them, or empty to leave the image undefined.
    /// GL: glEnable(GL_TEXTURE_2D), glBindTexture, glPixelStoref, glTexImage2D, glTexParameteri x 4,
    /// glTexEnvfv and glTexEnvf, or glTexEnvf alone.
    /// State: the bound texture, texturing enabled, the texture environment, the unpack alignment.
    void pushTextureLuminance(unsigned int const& texture, unsigned int const& width,
                              unsigned int const& height, bool const& blend,
                              Array<float> const& values) override;
    /// GL: glDeleteTextures, glTexEnvf(GL_MODULATE), glDisable(GL_TEXTURE_2D).
    void popTextureLuminance(unsigned int const& texture) override;

    /// Makes a texture from 8-bit RGBA pixels, with mipmaps, and gives its name.
    ///
    /// Deliberate (wrap-mode-2): clamping mode 2 passes the number 2.0 as the wrap mode, which GL refuses
    /// with GL_INVALID_ENUM; the wrap mode stays at its default. Modes above 3 set none.
    /// GL: glEnable(GL_TEXTURE_2D), glGenTextures, glBindTexture, glTexEnvf, glPixelStoref,
    /// glTexParameterf of both filters and both wrap modes, gluBuild2DMipmaps, glDisable(GL_TEXTURE_2D).
    /// State: the bound texture, the texture environment (GL_MODULATE), the unpack alignment (1).
    void loadTextureColor(unsigned int const& width, unsigned int const& height, unsigned char const* pixels,
                          unsigned int& texture, TextureClampingMode const& clamping) override;

    /// The same from pixels of 3 or 4 channels of 8, 16 or 32 (float) bits. For any other layout, and for a
    /// channel width that is not positive, the texture gets a name but no image.
    void loadTextureColor(unsigned int const& width, unsigned int const& height, int const& bitsPerChannel,
                          int const& bitsPerPixel, void const* pixels, unsigned int& texture,
                          TextureClampingMode const& clamping) override;

    /// GL: glEnable(GL_TEXTURE_2D), glDeleteTextures, glTexEnvf(GL_MODULATE), glDisable(GL_TEXTURE_2D).
    void unLoadTextureColor(unsigned int const& texture) override;
    /// GL: glEnable(GL_TEXTURE_2D), glBindTexture.  State: both; disableTextureColor() ends it.
    void activateTextureColor(unsigned int const& texture) override;
    void disableTextureColor() override;  ///< GL: glDisable(GL_TEXTURE_2D).

    /// Queues a texture for destroy_RL() and sets the name to 0xFFFFFFFF, so that it cannot be queued twice;
    /// that value itself is not queued. Any thread may call it; a spin lock guards the queue. Should growing
    /// the queue throw, the lock is free again and the name is kept.
    /// GL: none.
    void queueUnloadTextureColor(unsigned int& texture) override;

    /// Deletes every queued texture, in the order they were queued, and empties the queue.
    ///
    /// Deliberate (queue-drained-by-last-layer): each is deleted by unLoadTextureColor() of VL_Raster, not of
    /// this instance, so a queue is drained through the instance constructed last. That operation must not
    /// queue anything: the lock is held and not re-entrant.
    /// GL: none for an empty queue.
    void destroy_RL() override;

    // == Picking ==

    void loadName(unsigned int name) override;  ///< GL: glLoadName.

    // == Segments and planes ==

    /// Deliberate (half-stroke): sends center - direction * halfLength, center and center + direction *
    /// halfLength as GL_LINES, which drops the third: only the half before the center shows.
    void renderStroke3(Vector3<float> const& center, Vector3<float> const& direction,
                       float const& halfLength) override;
    void renderSegment2(Vector2<float> const& a, Vector2<float> const& b) override;

    /// A square grid in the plane, around its point nearest the origin: `divisions` cells along each side of
    /// length `size`. 0 divisions draw one line of each family, along the square's edge.
    void renderPlane3(Plane3<float> const& plane, float const& size, unsigned int const& divisions) override;
    void renderSegment3(Vector3<float> const& a, Vector3<float> const& b) override;
    /// The virtual renderSegment3() between setLineStipple(true) and setLineStipple(false).
    void renderSegmentStipple3(Vector3<float> const& a, Vector3<float> const& b) override;

    // == Axis gizmos ==
    // The handles of the editing tools in unit size: the handle of one axis reaches from the origin to 1 on
    // it. Each is drawn under a picking name, so that a click in selection mode tells which was hit. Sets
    // push a color for each handle and take all of them back at the end. Axis values without a handle draw
    // nothing.

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

    /// One scale handle: a filled cube of half edge `size` that ends at 1 on the axis, and a segment to it
    /// from the origin; axis 3 is the center, a cube without a segment. The first overload takes the axis as
    /// the picking name.
    /// GL: glPolygonMode x 2, glLoadName, glPushMatrix, glTranslatef, glRotatef, the box, glPopMatrix, the
    /// segment, and the state restored.
    void renderAxisBox3(VL_AXIS const& axis, float const& size) override;
    void renderAxisBox3(VL_AXIS const& axis, unsigned int const& name, float const& size) override;

    /// The dashed circles of the three axes.
    ///
    /// Deliberate (names-as-axes): the names are passed on as the axes, and so also as picking names. Callers
    /// pass 0, 1, 2; with other names nothing is drawn.
    void renderAxesCircleStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                  unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                  float const& radius) override;
    /// The circles of the three axes.
    void renderAxesCircle3(unsigned int const& nameX, unsigned int const& nameY, unsigned int const& nameZ,
                           Tuple3<Color4<float>> const& colors, float const& radius) override;

    /// The rotate gizmo: the halves of the three circles that are turned toward the viewer.
    /// \param viewDirection the direction in which the viewer looks, in the space that `frame` leads to.
    /// \param frame the gizmo's place and orientation. It is applied to the points, not to the model-view
    ///        matrix.
    /// \param scale applied to the circles before `frame`.
    void renderAxesCircleCulled3(unsigned int const& nameX, unsigned int const& nameY,
                                 unsigned int const& nameZ, Vector3<float> const& viewDirection,
                                 Matrix4<float> const& frame, float scale,
                                 Tuple3<Color4<float>> const& colors, float const& radius) override;
    /// The same with the far halves drawn in lines of width 1.
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
    /// Deliberate (names-as-axes): the names are passed on as the axes. Callers pass 0, 1, 2; with other
    /// names nothing is drawn.
    void renderAxesCircleTape3(unsigned int const& nameX, unsigned int const& nameY,
                               unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                               float const& radius, float const& width) override;
    /// One axis's circle, dashed.
    void renderAxisCircleStipple3(VL_AXIS const& axis, float const& radius) override;
    /// One axis's ring of four quarter tapes, under the axis as picking name.
    void renderAxisCircleTape3(VL_AXIS const& axis, float const& radius, float const& width) override;

    // == Circles, quads and rhombi ==

    /// A circle in the XY plane about the origin: a loop of 360 points, one for each degree.
    void renderCircle3(float const& radius) override;

    /// A circle that keeps its place in `frame` but always faces the screen: every rotation and scale of the
    /// model-view matrix is dropped, then `scale` applied.
    ///
    /// Deliberate (twice-drawn-circle): the circle is drawn twice, once through the virtual renderCircle3()
    /// and once directly. The Matrix3 is not used.
    /// GL: glColor4f, glPushMatrix, glMultMatrixf, glGetFloatv, glLoadMatrixf, glScalef, two loops,
    /// glPopMatrix, glColor4f.
    void renderCircleCameraFacing3(Matrix4<float> const& frame, Matrix3<float> const& unused, float scale,
                                   Color4<float> const& color, float const& radius) override;

    /// A textured square from -1 to 1 in the XY plane.
    /// GL: glEnable(GL_TEXTURE_2D), glBindTexture, the polygon, glDisable(GL_TEXTURE_2D).
    void renderQuad3(unsigned int const& texture) override;
    /// A textured square on its corner, alike.
    void renderRhombus3(unsigned int const& texture) override;
    void renderRhombus3() override;

    /// The half of a circle that is turned toward the viewer and, in lines of width 1, the half that is
    /// turned away. Despite the name nothing is dashed.
    void renderCircleCulledStipple3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                    float const& radius) override;

    /// The half of a circle that is turned toward the viewer; where no part is nearer than the rest (the circle
    /// seen face-on), the whole circle.
    ///
    /// Deliberate (one-degree-gap): there is no segment between the last point and the first; a gap of one
    /// degree stays open.
    void renderCircleCulled3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                             float const& radius) override;

    /// A quarter of a band of height `width` along Z, following the circle from 5 to 85 degrees, with a
    /// pointed cap at each end.
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

    /// One move handle: a cone from 0.9 on the axis, `size` high, and a segment from the origin to 1. For
    /// another axis value only the name is loaded.
    /// GL: glPolygonMode x 2, gluNewQuadric, glLoadName, glPushMatrix, glTranslatef, glRotatef, gluCylinder,
    /// glPopMatrix, the segment, gluDeleteQuadric, and the state restored.
    void renderAxisArrow3(VL_AXIS const& axis, unsigned int const& name, float const& size) override;
    void renderAxisArrow3NoPicking(VL_AXIS const& axis, float const& size) override;
    void renderAxisArrowStipple3(VL_AXIS const& axis, unsigned int const& name, float const& size) override;

    /// An arrow of lines along -Y with its tip at -1.2, for gizmos in a scaled frame.
    void renderUnitArrow3() override;

    // == Ellipses ==
    // A strip of 30 points; the last lands just short of closing the curve.

    /// The ellipse center + u sin t + v cos t.
    void renderEllipse3(Vector3<float> const& center, Vector3<float> const& u,
                        Vector3<float> const& v) override;
    /// Ellipses in the planes of the axes, with half axes `a` and `b`.
    /// GL: glPushMatrix, glTranslated, the strip, glPopMatrix.
    void renderEllipse3_XZ(Vector3<float> const& center, float const& a, float const& b) override;
    void renderEllipse3_XY(Vector3<float> const& center, float const& a, float const& b) override;
    void renderEllipse3_YZ(Vector3<float> const& center, float const& a, float const& b) override;

    // == Arrows between points ==

    /// A shaded arrow: a segment, a four-sided head of length `headSize` (at most a third of the arrow) and,
    /// if wanted, a box at the tail. An arrow much shorter than its head (by 10,000) is left out. The head's
    /// base is drawn in 0.75 of the current color.
    void renderArrow3(Vector3<float> const& from, Vector3<float> const& to, float const& headSize,
                      bool const& tailBox) override;

    /// Makes arrays that renderArrow3_usingBuffers() draws: one arrow from each position, along
    /// directions[i] * scale. An arrow beyond the last color takes the last; without colors all are light
    /// blue. Heads are a third of their arrow; their bases take 0.8 of its color (deliberately not the 0.75
    /// of a single arrow). A direction of length zero gives corners that are not numbers.
    ///
    /// Only as many arrows are made as there are directions too. More than 357,913,941 arrows, whose indices
    /// 32 bits cannot count, give empty arrays.
    ///
    /// The outputs are overwritten: 10 vertices and colors, 12 triangle, 2 line and 4 quad indices for each
    /// arrow. They must not be the inputs. Storage is allocated only where an output's capacity is too small.
    /// GL: none.
    void createBuffers_forRenderArrow3(Array<Vector3<float>> const& positions,
                                       Array<Vector3<float>> const& directions,
                                       Array<Color4<float>> const& colors, float scale,
                                       Array<Vector3<float>>& vertices, Array<unsigned int>& triangles,
                                       Array<unsigned int>& lines, Array<unsigned int>& quads,
                                       Array<Color4<float>>& vertexColors) override;

    /// Draws what createBuffers_forRenderArrow3() has made, through the virtual operations of VL_Raster. The
    /// colors' opacity is not used. The arrays are client memory: no buffer object may be bound.
    /// GL: glPolygonMode x 2, glEnableClientState x 2, glVertexPointer, glColorPointer, glDrawElements x 3,
    /// glDisableClientState x 2, and the state restored.
    void renderArrow3_usingBuffers(Array<Vector3<float>> const& vertices,
                                   Array<unsigned int> const& triangles, Array<unsigned int> const& lines,
                                   Array<unsigned int> const& quads,
                                   Array<Color4<float>> const& vertexColors) override;

    /// A flat arrow with two barbs, each `size` times as long as the arrow.
    void renderArrow2(Vector2<float> const& from, Vector2<float> const& to, float const& size) override;

    // == Triangles, quads and points ==

    /// A triangle with its face normal, or with a normal for each vertex. Not guarded: a triangle without
    /// area has a normal that is not a number.
    void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) override;
    void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                        Vector3<float> const& normalA, Vector3<float> const& normalB,
                        Vector3<float> const& normalC) override;
    /// Without glBegin and glEnd: the caller opens one block of GL_TRIANGLES for many.
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

    /// The lattice's points in one block of GL_POINTS, z running fastest.
    void renderBox3Points_asPoints(Box3Points<float> const& points) override;
    void renderBox3Points_asPoints(Box3Points<double> const& points) override;
    void renderBox3Points_asPoints(Box3Points_ex<float> const& points) override;
    void renderBox3Points_asPoints(Box3Points_ex<double> const& points) override;

    /// A box: six quads, each corner with the face's normal (and, in the second overload, its own color
    /// before it); with `wire`, its edges.
    ///
    /// The overloads for double convert to float and call the virtual overload for float.
    /// GL: one glBegin(GL_QUADS) block; with `wire` GL_LINES, each face's first corner sent a fifth time, so
    /// that the thirty vertices pair up to the twelve edges.
    void render(Box3<float> const& box, bool const& wire) const override;
    void render(Box3<float> const& box, Tuple8<Vector3<float>> const& colors,
                bool const& wire) const override;

    /// A rectangle.
    ///
    /// Deliberate (two-edge-rectangle): with `wire` its five vertices are sent as GL_LINES, which shows the
    /// lower and the upper edge only.
    void render(Box2<float> const& box, bool const& wire) override;

    /// An oriented box, drawn as the upright one.
    ///
    /// Deliberate (upright-box-normals): with the constant, unrotated normals of the upright one too.
    void render(Obb3<float> const& box, bool const& wire) override;

    void render(Box2<double> const& box, bool const& wire) override;
    void render(Box3<double> const& box, bool const& wire) const override;
    void render(Box3<double> const& box, Tuple8<Vector3<float>> const& colors,
                bool const& wire) const override;
    void render(Obb3<double> const& box, bool const& wire) override;

    // == Triangle lists ==

    /// Indices are not checked: each must name a vertex. No buffer object may be bound.
    /// GL: glEnableClientState(GL_VERTEX_ARRAY), glVertexPointer, glDrawElements, glDisableClientState.
    void render(Array<Vector3<double>> const& vertices,
                Array<Tuple3<unsigned int>> const& triangles) override;

    /// As Core_RL draws them.
    void render(Array<Vector3<float>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) override;
    void render(Array<Vector3<double>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) override;

    // == Viewports ==

    /// GL: glGetIntegerv(GL_VIEWPORT).
    Tuple4<unsigned int> getCurrentViewportCoords() const override;

    /// Opens an overlay: a viewport in pixels that shows the orthographic `box`. popViewportOrtho() ends it,
    /// with GL_MODELVIEW selected again.
    ///
    /// Deliberate (viewport-attribute-mask): the attributes are saved under the mask 0x0BA2, the value of
    /// GL_VIEWPORT itself, which stands for the viewport, depth-buffer, accumulation-buffer, fog, pixel-mode
    /// and point groups. State of those groups that is set inside the overlay is gone after it; that of
    /// others, lighting too, stays.
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
