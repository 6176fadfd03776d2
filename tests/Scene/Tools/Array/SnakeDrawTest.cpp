// Snakes and arrays drawn through the draw list into an id target and read back. The camera
// is the identity: world x and y are the picture's, from -1 to 1.
#include "OpenGL/GLResourceTest.h"

#include "OpenGL/FBO.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/Texture2D.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/SceneHistory.h"
#include "Scene/ToolList.h"
#include "Scene/Tools/Array/Array.h"
#include "Scene/Tools/Array/Snake.h"

#include <array>
#include <cmath>
#include <memory>
#include <set>

namespace vel::test {
namespace {

constexpr int N = 64;
constexpr double PI = 3.14159265358979323846;

// A straight square bar along z from -0.5 to 0.5, half-width `h`, cut into `rings` - 1
// pieces so that it can bend.
Mesh* Bar(float h, int rings)
{
    auto* m = new Mesh;
    for (int r = 0; r < rings; ++r) {
        float z = float(r) / float(rings - 1) - 0.5f;
        for (Vector3<float> p : {Vector3<float>(-h, -h, z), Vector3<float>(h, -h, z), Vector3<float>(h, h, z),
                                 Vector3<float>(-h, h, z)})
            m->vertAdd(p);
    }
    for (int r = 0; r + 1 < rings; ++r)
        for (int k = 0; k < 4; ++k) {
            int a = 4 * r + k, b = 4 * r + (k + 1) % 4;
            m->faceFromIndices({a, b, b + 4, a + 4});
        }
    m->faceFromIndices({3, 2, 1, 0});
    int last = 4 * (rings - 1);
    m->faceFromIndices({last, last + 1, last + 2, last + 3});
    m->initialize(0);
    return m;
}

Curve* HalfCircle(double radius, int segments)
{
    std::vector<Vector3<float>> points;
    for (int i = 0; i <= segments; ++i) {
        double a = PI * i / segments;
        points.push_back({float(radius * std::cos(a)), float(radius * std::sin(a)), 0});
    }
    return new Curve(points, false, false, 0);
}

class SnakeDrawTest : public GLResourceTest {
protected:
    std::unique_ptr<FBO> target;
    ToolList list;

    void SetUp() override
    {
        GLResourceTest::SetUp();
        History::instance().clear();
        Shader::ProjectionModelViewMatrix = Matrix4<double>();
        Shader::NormalMatrix = Matrix3<double>();
        Shader::PMVSign = 1;
        gl_Depth_Test.set(true);
        Rendering::instance().style = 4;
        target = std::make_unique<FBO>(dsDepth, N, N);
        target->addColor(GL_RGBA32I, GL_RGBA_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
        target->addColor(GL_RGB32I, GL_RGB_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
        target->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
        ASSERT_TRUE(target->enable());
        GLenum buffers[3] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2};
        glDrawBuffers(3, buffers);
        glViewport(0, 0, N, N);
        int const zero[4] = {0, 0, 0, 0};
        float const none[4] = {0, 0, 0, 0};
        glClearBufferiv(GL_COLOR, 0, zero);
        glClearBufferiv(GL_COLOR, 1, zero);
        glClearBufferfv(GL_COLOR, 2, none);
        glClear(GL_DEPTH_BUFFER_BIT);
    }
    void TearDown() override
    {
        list.reset();
        target.reset();
        Rendering::instance().style = Rendering::STYLE_PBR;
        glBindVertexArray(0);
        History::instance().clear();
        GLResourceTest::TearDown();
    }

    void draw(Tool* top)
    {
        list.reset();
        list.append(top, false);
        for (RenderItem const& item : list.items)
            item.tool->prepareRender(item.element);
        list.sort(false, true, true);
        int counter = 0;
        list.render(Rendering::instance().renderState(6), false, counter);
        ASSERT_TRUE(target->enableRead());
        glReadBuffer(GL_COLOR_ATTACHMENT0);
    }

    // Object id and item at the pixel of world point (x, y).
    static std::pair<int, int> idAt(double x, double y)
    {
        int px = int((x + 1) * 0.5 * N), py = int((y + 1) * 0.5 * N);
        int i[4] = {0, 0, 0, 0};
        glReadPixels(px, py, 1, 1, GL_RGBA_INTEGER, GL_INT, i);
        return {i[0], i[1]};
    }
};

TEST_F(SnakeDrawTest, AStraightBarBentAlongAHalfCircleCoversTheArc)
{
    double const R = 0.6;
    Tool parent;
    auto* snake = new Snake(Shared<Element>(HalfCircle(R, 32)), 0, 0);
    parent.addChild(snake);
    // Stretched over 32 segments, the cross-section grows as much: the bar is thin to match.
    snake->setItem(new Tool(Shared<Element>(Bar(0.05f / 32, 65))));
    draw(&parent);
    Curve* axis = snake->axis();
    ASSERT_TRUE(axis->bonesTexture);
    for (double degrees : {10.0, 45.0, 90.0, 135.0, 170.0}) {
        double a = degrees * PI / 180;
        EXPECT_EQ(idAt(R * std::cos(a), R * std::sin(a)).first, 2) << degrees << " degrees on the arc";
        EXPECT_EQ(idAt(0.7 * R * std::cos(a), 0.7 * R * std::sin(a)).first, 0) << degrees << " degrees inside";
        EXPECT_EQ(idAt(1.3 * R * std::cos(a), 1.3 * R * std::sin(a)).first, 0) << degrees << " degrees outside";
    }
    EXPECT_EQ(idAt(0, 0).first, 0) << "the unbent bar would stand here, seen end on";
    EXPECT_EQ(idAt(0, -0.5).first, 0);

    // One vertex left: no bones, nothing drawn.
    axis->construct({{0, 0, 0}}, false, false);
    glClearBufferiv(GL_COLOR, 0, std::array<int, 4>{}.data());
    draw(&parent);
    for (double x = -1; x < 1; x += 0.125)
        for (double y = -1; y < 1; y += 0.125)
            ASSERT_EQ(idAt(x, y).first, 0) << x << "," << y;
}

TEST_F(SnakeDrawTest, AnArrayOfFiveCubesShowsFiveObjectsWithTheirItemNumbers)
{
    Tool parent;
    std::vector<Vector3<float>> line;
    for (int i = 0; i <= 5; ++i)
        line.push_back({-0.8f + 0.32f * float(i), 0, 0});
    auto* array = new Array(Shared<Element>(new Curve(line, false, false, 0)), 0);
    parent.addChild(array);
    Tool* cube = new Tool(Shared<Element>(Mesh::Box().release()), Matrix34<double>::Scale(0.5));
    array->setItem(cube);
    draw(&parent);
    std::set<int> objects;
    for (int k = 0; k < 5; ++k) {
        auto [object, item] = idAt(-0.64 + 0.32 * k, 0);
        ASSERT_NE(object, 0) << "instance " << k;
        EXPECT_EQ(item, k);
        EXPECT_EQ(list.items[size_t(object - 1)].tool, cube);
        objects.insert(object);
        EXPECT_EQ(idAt(-0.8 + 0.32 * k, 0).first, 0) << "between instances " << k << " and " << k + 1;
    }
    EXPECT_EQ(objects.size(), 5u);
}

} // namespace
} // namespace vel::test
