// Instantiates what the public headers hold as templates: their warnings show in the application's own
// sources.
#include "toolkit/toolkit.h"

#include "foundation/basic/PoolByIndex.h"
#include "foundation/geometry/array_tools.h"

#include <array>
#include <vector>

template class vellum::Array<int>;
template class vellum::Array<vellum::Vector3<float>>;
template class vellum::Array<vellum::Color4<float>>;
template class vellum::PoolByIndex<int>;
template class vellum::toolkit::Span<float>;

namespace {

struct Part {
    int value;
};

int sum(vellum::toolkit::Span<int> values) {
    int result = 0;
    for (int const value : values) {
        result += value;
    }
    return result;
}

}  // namespace

/// Never called.
int templatesOfEverything(vellum::Mesh& mesh, vellum::toolkit::RenderSession& session,
                          vellum::Program_gl& program) {
    using namespace vellum;
    Array<int> numbers{3, 1, 2};
    array_tools::quickSort(numbers.data(), 0, 2, [](int a, int b) { return a < b; });
    int const plain[] = {1, 2};
    int total = sum(numbers) + sum(std::vector<int>{1}) + sum(std::array<int, 1>{{2}}) + sum(plain) +
                sum({numbers.data(), 2});
    Vector2<float> const a{1, 2};
    Vector3<double> const b{1, 2, 3};
    total += static_cast<int>(length(a + a * 2.0F) + convert<double>(a / 2.0F).x);
    total += static_cast<int>(length(normalized(cross(b, -b) + b * 2.0)) + dot(b - b, b / 2.0));
    total += static_cast<int>((Matrix4<double>::identity() * Matrix4<double>::identity()).e[0]);
    total += Color4<float>{1, 1, 1, 1} == Color4<float>{0, 0, 0, 1} ? 1 : 0;
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", Array<Vector2<float>>{{0, 0}});
    Program_gl::UniformKey key("size");
    program.setUniform(key, 1.0F);
    program.setUniform(key, 1);
    total += session.add<Part>(Part{1}).value;
    toolkit::drawWith(session.add<Glass_shader>(), [&total] { ++total; });
    return total;
}
