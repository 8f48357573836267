#pragma once

#include "foundation/raster/Core_RL.h"

#include <sstream>
#include <string>
#include <vector>

namespace vellum {

/// A render layer that records its calls and does not draw, so that the operations of Core_RL can be tested
/// without a drawing system.
///
/// Each call of a pure virtual operation becomes a text in `calls`: the operation's name and, where a test
/// checks them, its arguments, separated by blanks. Triangles with and without normals are also stored as
/// numbers.
class Recording_RL : public Core_RL {
public:
    struct Triangle {
        Vector3<float> corners[3];
        Vector3<float> normals[3];
        bool hasNormals;
    };

    mutable std::vector<std::string> calls;
    std::vector<Triangle> triangles;

    std::vector<std::string> takeCalls() {
        std::vector<std::string> taken;
        taken.swap(calls);
        return taken;
    }

    // The word of the spin lock, for tests of its state.
    void const* lockWord() const { return &textureQueueLock; }

    using Core_RL::render;
    using Core_RL::renderArrow2;
    using Core_RL::renderArrow3;
    using Core_RL::renderPoint2;
    using Core_RL::renderPoint3;
    using Core_RL::renderPoint3_scoped;

    void setLineWidth(float const& width) override { note("setLineWidth", width); }
    bool isExtensionSupported(char const*) override {
        note("isExtensionSupported");
        return {};
    }
    void begin(Primitive::type primitive) override { note("begin", primitive); }
    void end() override { note("end"); }
    void genBuffers(unsigned long, unsigned int*) override { note("genBuffers"); }
    void deleteBuffers(unsigned long, unsigned int*) override { note("deleteBuffers"); }
    void bindBuffer(BufferTarget::type, unsigned int) override { note("bindBuffer"); }
    void bufferData(BufferTarget::type, unsigned long, void*, BufferUsage::type) override {
        note("bufferData");
    }
    void bufferSubData(BufferTarget::type, void*, unsigned long, void*) override { note("bufferSubData"); }
    void enableClientState(ClientCapability::type) override { note("enableClientState"); }
    void enable(ClientCapability::type) override { note("enable"); }
    void disableClientState(ClientCapability::type) override { note("disableClientState"); }
    void vertexPointer(int, DataType::type, unsigned long, void*) override { note("vertexPointer"); }
    void colorPointer(int, DataType::type, unsigned long, void*) override { note("colorPointer"); }
    void drawElements(Primitive::type, unsigned long, DataType::type, void*) override {
        note("drawElements");
    }
    void drawArrays(Primitive::type, unsigned long, unsigned long) override { note("drawArrays"); }
    unsigned int getTotalGpuMemory() override {
        note("getTotalGpuMemory");
        return {};
    }
    unsigned int getFreeGpuMemory() override {
        note("getFreeGpuMemory");
        return {};
    }
    bool checkShaderSupport() const override {
        note("checkShaderSupport");
        return {};
    }
    unsigned int createShader(ShaderType::type) override {
        note("createShader");
        return {};
    }
    void shaderSource(unsigned int, unsigned long, char const**, int*) override { note("shaderSource"); }
    void compileShader(unsigned int) override { note("compileShader"); }
    void attachShader(unsigned int, unsigned int) override { note("attachShader"); }
    unsigned int createProgram() override {
        note("createProgram");
        return {};
    }
    int getAttribLocation(unsigned int, char*) override {
        note("getAttribLocation");
        return {};
    }
    int getUniformLocation(unsigned int, char*) override {
        note("getUniformLocation");
        return {};
    }
    void linkProgram(unsigned int) override { note("linkProgram"); }
    void useProgram(unsigned int) override { note("useProgram"); }
    void checkShaderCompilationErrors(unsigned int, char const*) override {
        note("checkShaderCompilationErrors");
    }
    void checkProgramLinkageErrors(unsigned int, char const*, char const*) override {
        note("checkProgramLinkageErrors");
    }
    void programParameterI(unsigned int, ShaderParameterName::type, int) override {
        note("programParameterI");
    }
    void detachShader(unsigned int, unsigned int) override { note("detachShader"); }
    void deleteShader(unsigned int) override { note("deleteShader"); }
    void deleteProgram(unsigned int) override { note("deleteProgram"); }
    bool getError(VL_String&, int&) override {
        note("getError");
        return {};
    }
    bool getError(char const*, int) override {
        note("getError");
        return {};
    }
    void uniform1f(int, float) override { note("uniform1f"); }
    void uniform3f(int, float, float, float) override { note("uniform3f"); }
    void hint(HintTarget::type, HintMode::type) override { note("hint"); }
    void pointParameterfvEXT(PointParameterName::type, float*) override { note("pointParameterfvEXT"); }
    void pointParameterfEXT(PointParameterName::type, float) override { note("pointParameterfEXT"); }
    void* mapBuffer(BufferTarget::type, BufferAccess::type) override {
        note("mapBuffer");
        return nullptr;
    }
    void unmapBuffer(BufferTarget::type) override { note("unmapBuffer"); }
    Matrix4<float> getModelViewMatrix_asFloat() const override {
        note("getModelViewMatrix_asFloat");
        return {};
    }
    Matrix4<float> getModelViewTransposedMatrix_asFloat() const override {
        note("getModelViewTransposedMatrix_asFloat");
        return {};
    }
    void enableLighting() override { note("enableLighting"); }
    void disableLighting() override { note("disableLighting"); }
    void enableLight_0() override { note("enableLight_0"); }
    void disableLight_0() override { note("disableLight_0"); }
    void enableLight_1() override { note("enableLight_1"); }
    void disableLight_1() override { note("disableLight_1"); }
    void enableColorMaterial() override { note("enableColorMaterial"); }
    void disableColorMaterial() override { note("disableColorMaterial"); }
    void setColor(Color4<float> const& color) override {
        colorStack.back() = color;
        note("setColor", color);
    }
    void setFillingFront(FillingMode const& mode) override { note("setFillingFront", mode); }
    void setFillingBack(FillingMode const& mode) override { note("setFillingBack", mode); }
    void setLineStipple(bool) override { note("setLineStipple"); }
    void setBlending(BlendingMode const& mode) override { note("setBlending", mode); }
    void setDepthTest(DepthtTestMode const& mode) override { note("setDepthTest", mode.mode, mode.write); }
    void setCulling(CullingMode const& mode) override { note("setCulling", mode.enabled, mode.back); }
    unsigned int createTexture() override {
        note("createTexture");
        return {};
    }
    void destroyTexture(unsigned int const&) override { note("destroyTexture"); }
    void createTextures(unsigned int const&, Array<unsigned int>&) override { note("createTextures"); }
    void destroyTextures(Array<unsigned int> const&) override { note("destroyTextures"); }
    void setTransform(Matrix4<double> const&) override { note("setTransform"); }
    void setTransform(Matrix4<float> const&) override { note("setTransform"); }
    void pushTransform(Matrix4<double> const&) override { note("pushTransform"); }
    void pushTransform(Matrix4<float> const&) override { note("pushTransform"); }
    void popTransform() override { note("popTransform"); }
    void pushTextureLuminance(unsigned int const&, unsigned int const&, unsigned int const&, bool const&,
                              Array<float> const&) override {
        note("pushTextureLuminance");
    }
    void popTextureLuminance(unsigned int const&) override { note("popTextureLuminance"); }
    void loadTextureColor(unsigned int const&, unsigned int const&, unsigned char const*, unsigned int&,
                          TextureClampingMode const&) override {
        note("loadTextureColor");
    }
    void loadTextureColor(unsigned int const&, unsigned int const&, int const&, int const&, void const*,
                          unsigned int&, TextureClampingMode const&) override {
        note("loadTextureColor");
    }
    void unLoadTextureColor(unsigned int const&) override { note("unLoadTextureColor"); }
    void activateTextureColor(unsigned int const&) override { note("activateTextureColor"); }
    void disableTextureColor() override { note("disableTextureColor"); }
    void queueUnloadTextureColor(unsigned int&) override { note("queueUnloadTextureColor"); }
    void destroy_RL() override { note("destroy_RL"); }
    void loadName(unsigned int name) override { note("loadName", name); }
    void renderStroke3(Vector3<float> const&, Vector3<float> const&, float const&) override {
        note("renderStroke3");
    }
    void renderSegment2(Vector2<float> const&, Vector2<float> const&) override { note("renderSegment2"); }
    void renderPlane3(Plane3<float> const& plane, float const& size, unsigned int const& divisions) override {
        note("renderPlane3", plane.n, plane.d, size, divisions);
    }
    void renderSegment3(Vector3<float> const&, Vector3<float> const&) override { note("renderSegment3"); }
    void renderSegmentStipple3(Vector3<float> const&, Vector3<float> const&) override {
        note("renderSegmentStipple3");
    }
    void renderBox3(unsigned int const&, Color4<float> const&, float const&) override { note("renderBox3"); }
    void renderAxesBox3(unsigned int const&, unsigned int const&, unsigned int const&,
                        Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesBox3");
    }
    void renderAxesBox3(unsigned int const&, unsigned int const&, unsigned int const&, unsigned int const&,
                        Tuple4<Color4<float>> const&, float const&) override {
        note("renderAxesBox3");
    }
    void renderAxisBox3(VL_AXIS const&, float const&) override { note("renderAxisBox3"); }
    void renderAxisBox3(VL_AXIS const&, unsigned int const&, float const&) override {
        note("renderAxisBox3");
    }
    void renderAxesCircleStipple3(unsigned int const&, unsigned int const&, unsigned int const&,
                                  Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesCircleStipple3");
    }
    void renderAxesCircle3(unsigned int const&, unsigned int const&, unsigned int const&,
                           Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesCircle3");
    }
    void renderAxesCircleCulled3(unsigned int const&, unsigned int const&, unsigned int const&,
                                 Vector3<float> const&, Matrix4<float> const&, float,
                                 Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesCircleCulled3");
    }
    void renderAxesCircleCulledStipple3(unsigned int const&, unsigned int const&, unsigned int const&,
                                        Vector3<float> const&, Matrix4<float> const&, float,
                                        Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesCircleCulledStipple3");
    }
    void renderAxisCircle3(VL_AXIS const&, float const&) override { note("renderAxisCircle3"); }
    void renderAxisCircleCulled3(VL_AXIS const&, unsigned int const&, Vector3<float> const&,
                                 Matrix4<float> const&, float, float const&) override {
        note("renderAxisCircleCulled3");
    }
    void renderAxisCircleCulledStipple3(VL_AXIS const&, unsigned int const&, Vector3<float> const&,
                                        Matrix4<float> const&, float, float const&) override {
        note("renderAxisCircleCulledStipple3");
    }
    void renderAxisCircle3(VL_AXIS const&, unsigned int const&, float const&) override {
        note("renderAxisCircle3");
    }
    void renderAxisCircle3NoPicking(VL_AXIS const&, float const&) override {
        note("renderAxisCircle3NoPicking");
    }
    void renderAxesCircleTape3(unsigned int const&, unsigned int const&, unsigned int const&,
                               Tuple3<Color4<float>> const&, float const&, float const&) override {
        note("renderAxesCircleTape3");
    }
    void renderAxisCircleStipple3(VL_AXIS const&, float const&) override { note("renderAxisCircleStipple3"); }
    void renderAxisCircleTape3(VL_AXIS const&, float const&, float const&) override {
        note("renderAxisCircleTape3");
    }
    void renderCircle3(float const&) override { note("renderCircle3"); }
    void renderCircleCameraFacing3(Matrix4<float> const&, Matrix3<float> const&, float, Color4<float> const&,
                                   float const&) override {
        note("renderCircleCameraFacing3");
    }
    void renderQuad3(unsigned int const&) override { note("renderQuad3"); }
    void renderRhombus3(unsigned int const&) override { note("renderRhombus3"); }
    void renderRhombus3() override { note("renderRhombus3"); }
    void renderCircleCulledStipple3(Vector3<float> const&, Matrix4<float> const&, float const&) override {
        note("renderCircleCulledStipple3");
    }
    void renderCircleCulled3(Vector3<float> const&, Matrix4<float> const&, float const&) override {
        note("renderCircleCulled3");
    }
    void renderCircleTape3(float const&, float const&) override { note("renderCircleTape3"); }
    void renderAxesArrow3(unsigned int const&, unsigned int const&, unsigned int const&,
                          Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesArrow3");
    }
    void renderAxesArrowStipple3(Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesArrowStipple3");
    }
    void renderAxesArrowStipple3(unsigned int const&, unsigned int const&, unsigned int const&,
                                 Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesArrowStipple3");
    }
    void renderAxesPlane3(unsigned int const&, unsigned int const&, unsigned int const&,
                          Tuple3<Color4<float>> const&, float const&) override {
        note("renderAxesPlane3");
    }
    void renderAxisArrow3(VL_AXIS const&, unsigned int const&, float const&) override {
        note("renderAxisArrow3");
    }
    void renderAxisArrow3NoPicking(VL_AXIS const&, float const&) override {
        note("renderAxisArrow3NoPicking");
    }
    void renderAxisArrowStipple3(VL_AXIS const&, unsigned int const&, float const&) override {
        note("renderAxisArrowStipple3");
    }
    void renderUnitArrow3() override { note("renderUnitArrow3"); }
    void renderEllipse3(Vector3<float> const&, Vector3<float> const&, Vector3<float> const&) override {
        note("renderEllipse3");
    }
    void renderEllipse3_XZ(Vector3<float> const&, float const&, float const&) override {
        note("renderEllipse3_XZ");
    }
    void renderEllipse3_XY(Vector3<float> const&, float const&, float const&) override {
        note("renderEllipse3_XY");
    }
    void renderEllipse3_YZ(Vector3<float> const&, float const&, float const&) override {
        note("renderEllipse3_YZ");
    }
    void renderArrow3(Vector3<float> const& from, Vector3<float> const& to, float const& headSize,
                      bool const& tailBox) override {
        note("renderArrow3", from, to, headSize, tailBox);
    }
    void createBuffers_forRenderArrow3(Array<Vector3<float>> const&, Array<Vector3<float>> const&,
                                       Array<Color4<float>> const&, float, Array<Vector3<float>>&,
                                       Array<unsigned int>&, Array<unsigned int>&, Array<unsigned int>&,
                                       Array<Color4<float>>&) override {
        note("createBuffers_forRenderArrow3");
    }
    void renderArrow3_usingBuffers(Array<Vector3<float>> const&, Array<unsigned int> const&,
                                   Array<unsigned int> const&, Array<unsigned int> const&,
                                   Array<Color4<float>> const&) override {
        note("renderArrow3_usingBuffers");
    }
    void renderArrow2(Vector2<float> const& from, Vector2<float> const& to, float const& size) override {
        note("renderArrow2", from, to, size);
    }
    void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) override {
        note("renderTriangle", a, b, c);
        triangles.push_back({{a, b, c}, {}, false});
    }
    void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                        Vector3<float> const& normalA, Vector3<float> const& normalB,
                        Vector3<float> const& normalC) override {
        note("renderTriangle", a, b, c, normalA, normalB, normalC);
        triangles.push_back({{a, b, c}, {normalA, normalB, normalC}, true});
    }
    void renderTriangleOptimized(Vector3<float> const& a, Vector3<float> const& b,
                                 Vector3<float> const& c) override {
        note("renderTriangleOptimized", a, b, c);
    }
    void renderQuad3(Vector3<float> const&, Vector3<float> const&, Vector3<float> const&,
                     Vector3<float> const&) override {
        note("renderQuad3");
    }
    void renderPoint3(Vector3<float> const& p) override { note("renderPoint3", p); }
    void renderPoint3_Begin() override { note("renderPoint3_Begin"); }
    void renderPoint3_End() override { note("renderPoint3_End"); }
    void renderPoint3_scoped(Vector3<float> const& p) override { note("renderPoint3_scoped", p); }
    void renderPoint2(Vector2<float> const& p) override { note("renderPoint2", p); }
    void renderCross3() override { note("renderCross3"); }
    void renderBox3(Vector3<float> const&, float const&) override { note("renderBox3"); }
    void renderBox3Points_asPoints(Box3Points<float> const&) override { note("renderBox3Points_asPoints"); }
    void renderBox3Points_asPoints(Box3Points<double> const&) override { note("renderBox3Points_asPoints"); }
    void renderBox3Points_asPoints(Box3Points_ex<float> const&) override {
        note("renderBox3Points_asPoints");
    }
    void renderBox3Points_asPoints(Box3Points_ex<double> const&) override {
        note("renderBox3Points_asPoints");
    }
    void render(Box3<float> const& box, bool const& wire) const override {
        note("renderBox3f", box.min, box.max, wire);
    }
    void render(Box3<float> const&, Tuple8<Vector3<float>> const&, bool const&) const override {
        note("render");
    }
    void render(Box2<float> const& box, bool const& wire) override {
        note("renderBox2f", box.min, box.max, wire);
    }
    void render(Obb3<float> const&, bool const&) override { note("render"); }
    void render(Box2<double> const&, bool const&) override { note("render"); }
    void render(Box3<double> const&, bool const&) const override { note("render"); }
    void render(Box3<double> const&, Tuple8<Vector3<float>> const&, bool const&) const override {
        note("render");
    }
    void render(Obb3<double> const&, bool const&) override { note("render"); }
    void render(Array<Vector3<double>> const&, Array<Tuple3<unsigned int>> const&) override {
        note("render");
    }
    Tuple4<unsigned int> getCurrentViewportCoords() const override {
        note("getCurrentViewportCoords");
        return {};
    }
    void pushViewportOrtho(Tuple4<unsigned int> const&, Tuple4<float> const&) override {
        note("pushViewportOrtho");
    }
    void popViewportOrtho() override { note("popViewportOrtho"); }
    void renderAxisArrowStipple3(VL_AXIS const&, float const&) override { note("renderAxisArrowStipple3"); }

private:
    static void _write(std::ostream& out, Vector3<float> const& v) { out << v.x << ',' << v.y << ',' << v.z; }
    static void _write(std::ostream& out, Vector2<float> const& v) { out << v.x << ',' << v.y; }
    static void _write(std::ostream& out, Color4<float> const& c) {
        out << c.r << ',' << c.g << ',' << c.b << ',' << c.a;
    }
    template <class T>
    static void _write(std::ostream& out, T const& value) {
        out << value;
    }

    template <class... Arguments>
    void note(char const* name, Arguments const&... arguments) const {
        std::ostringstream text;
        text << name;
        ((text << ' ', _write(text, arguments)), ...);
        calls.push_back(text.str());
    }
};

}  // namespace vellum
