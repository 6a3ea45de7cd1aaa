// Renders with OSMesa, OpenGL in software: shades every fragment, into a picture of kRate times the
// size, which is then averaged. Spheres are instances of a tessellated one.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/osmesa.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <stdexcept>

#include "host.h"

using namespace zebpeers;

namespace
{

constexpr int kLarge = kRate * kSize;

// Points go from the scene to the eye's space, from there to the screen. An instance has a place, a
// size and a colour.
const char* const kVertexShader = R"(#version 330
uniform vec3 eye;
uniform float focus;
layout(location = 0) in vec3 point;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec4 instance;
layout(location = 3) in vec3 tint;
out vec3 seen, around;
flat out vec3 color;
void main()
{
    const float near = 0.1, far = 100.0;
    seen = instance.w * point + instance.xyz - eye;
    around = normal;
    color = tint;
    float depth = ((far + near) * seen.z - 2.0 * far * near) / (far - near);
    gl_Position = vec4(focus * seen.xy, depth, seen.z);
})";

const char* const kFragmentShader = R"(#version 330
uniform vec3 toLight[3];
uniform float bright, dim, kd, ks, power;
in vec3 seen, around;
flat in vec3 color;
out vec4 result;
void main()
{
    vec3 toEye = normalize(-seen), n = normalize(around);
    if (dot(n, toEye) < 0.0) n = -n;
    float diffuse = 0.0, specular = 0.0;
    for (int k = 0; k < 3; ++k) {
        float cosine = dot(n, toLight[k]);
        if (cosine > 0.0) {
            diffuse += cosine;
            specular += pow(max(dot(n, normalize(toLight[k] + toEye)), 0.0), power);
        }
    }
    result = vec4((dim + kd * bright * diffuse) * color + ks * bright * specular, 1.0);
})";

void check(GLuint object, bool good, void (*log)(GLuint, GLsizei, GLsizei*, GLchar*))
{
    if (good) return;
    char text[1000] = "";
    log(object, sizeof text, nullptr, text);
    throw std::runtime_error(text);
}

GLuint compile(GLenum kind, const char* source)
{
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint good = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &good);
    check(shader, good, glGetShaderInfoLog);
    return shader;
}

void useProgram()
{
    const GLuint program = glCreateProgram();
    glAttachShader(program, compile(GL_VERTEX_SHADER, kVertexShader));
    glAttachShader(program, compile(GL_FRAGMENT_SHADER, kFragmentShader));
    glLinkProgram(program);
    GLint good = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &good);
    check(program, good, glGetProgramInfoLog);
    glUseProgram(program);
    const auto set = [program](const char* name, float value) {
        glUniform1f(glGetUniformLocation(program, name), value);
    };
    set("focus", 1 / std::tan(kFieldOfView * 3.14159265f / 360));
    set("bright", kBright), set("dim", kKa * kAmbient);
    set("kd", kKd), set("ks", kKs), set("power", 1 / kRoughness);
    glUniform3fv(glGetUniformLocation(program, "eye"), 1, kEye.data());
    std::vector<Vec> toLight;
    for (const Vec& way : kWays) toLight.push_back(normalize(-1 * way));
    glUniform3fv(glGetUniformLocation(program, "toLight"), 3, toLight.data()->data());
}

// What lies on the graphics side: buffers, deleted when the picture is done.
class Buffers
{
public:
    ~Buffers() { glDeleteBuffers(static_cast<GLsizei>(fNames.size()), fNames.data()); }

    template <class T>
    void add(GLenum target, const std::vector<T>& list)
    {
        glGenBuffers(1, &fNames.emplace_back());
        glBindBuffer(target, fNames.back());
        glBufferData(target, static_cast<GLsizeiptr>(list.size() * sizeof(T)), list.data(),
                     GL_STATIC_DRAW);
    }

private:
    std::vector<GLuint> fNames;
};

struct Instance {
    Vec place;
    float size;
    Vec color;
};

void attribute(GLuint index, GLint count, std::size_t stride, std::size_t offset, GLuint divisor)
{
    glVertexAttribPointer(index, count, GL_FLOAT, GL_FALSE, static_cast<GLsizei>(stride),
                          reinterpret_cast<const void*>(offset));
    glEnableVertexAttribArray(index);
    glVertexAttribDivisor(index, divisor);
}

void draw(const Mesh& mesh, const std::vector<Instance>& instances)
{
    Buffers buffers;
    buffers.add(GL_ARRAY_BUFFER, mesh.points);
    attribute(0, 3, sizeof(Vec), 0, 0);
    buffers.add(GL_ARRAY_BUFFER, mesh.normals);
    attribute(1, 3, sizeof(Vec), 0, 0);
    buffers.add(GL_ARRAY_BUFFER, instances);
    attribute(2, 4, sizeof(Instance), 0, 1);
    attribute(3, 3, sizeof(Instance), offsetof(Instance, color), 1);
    buffers.add(GL_ELEMENT_ARRAY_BUFFER, mesh.triangles);
    glDrawElementsInstanced(GL_TRIANGLES, static_cast<GLsizei>(3 * mesh.triangles.size()),
                            GL_UNSIGNED_INT, nullptr, static_cast<GLsizei>(instances.size()));
}

// A sphere of radius 1, of n chords from pole to pole and 2 n round.
Mesh unitSphere(int n)
{
    Mesh mesh;
    const auto width = static_cast<unsigned>(2 * n + 1);
    for (int j = 0; j <= n; ++j) {
        for (int i = 0; i <= 2 * n; ++i) {
            const float u = 3.14159265f * static_cast<float>(i) / static_cast<float>(n);
            const float v = 3.14159265f * static_cast<float>(j) / static_cast<float>(n);
            mesh.points.push_back(
                {std::cos(u) * std::sin(v), std::cos(v), std::sin(u) * std::sin(v)});
        }
    }
    mesh.normals = mesh.points;
    for (unsigned j = 0; j < static_cast<unsigned>(n); ++j) {
        for (unsigned i = 0; i + 1 < width; ++i) {
            const unsigned a = j * width + i, b = a + 1, c = a + width, d = c + 1;
            if (j) mesh.triangles.push_back({a, b, d});
            if (j + 1 < static_cast<unsigned>(n)) mesh.triangles.push_back({a, d, c});
        }
    }
    return mesh;
}

// So many chords from pole to pole that the outline strays by a quarter of a pixel at most.
int chords(const Sphere& sphere)
{
    const float distance = sphere.center[2] - sphere.radius - kEye[2];
    const float pixels = sphere.radius * pixelsPerUnit(distance);
    return std::max(4, static_cast<int>(std::ceil(3.14159265f / std::sqrt(8 * 0.25f / pixels))));
}

void drawSpheres(const Scene& scene)
{
    std::map<int, std::vector<Instance>> groups;
    for (const Sphere& sphere : scene.spheres) {
        groups[chords(sphere)].push_back({sphere.center, sphere.radius, sphere.color});
    }
    for (const auto& [n, instances] : groups) draw(unitSphere(n), instances);
}

void average(const std::vector<std::uint32_t>& large, Picture& picture)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(large.data());
    for (long y = 0; y < kSize; ++y) {
        for (long x = 0; x < kSize; ++x) {
            int sum[3] = {};
            for (int k = 0; k < kRate * kRate; ++k) {
                const long at = (kRate * y + k / kRate) * kLarge + kRate * x + k % kRate;
                for (int c = 0; c < 3; ++c) sum[c] += bytes[4 * at + c];
            }
            for (int c = 0; c < 3; ++c) {
                constexpr int kCount = kRate * kRate;
                picture.at(x, y)[c] = static_cast<unsigned char>((sum[c] + kCount / 2) / kCount);
            }
        }
    }
}

void render(const Scene& scene, const std::vector<std::uint32_t>& large, Picture& picture)
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    drawSpheres(scene);
    for (const Mesh& mesh : scene.meshes) draw(mesh, {{{0, 0, 0}, 1, mesh.color}});
    glFinish();
    average(large, picture);
}

void makeContext(std::vector<std::uint32_t>& large)
{
    const int wanted[] = {OSMESA_FORMAT,
                          OSMESA_RGBA,
                          OSMESA_DEPTH_BITS,
                          32,
                          OSMESA_PROFILE,
                          OSMESA_CORE_PROFILE,
                          OSMESA_CONTEXT_MAJOR_VERSION,
                          3,
                          OSMESA_CONTEXT_MINOR_VERSION,
                          3,
                          0};
    const OSMesaContext context = OSMesaCreateContextAttribs(wanted, nullptr);
    if (!context || !OSMesaMakeCurrent(context, large.data(), GL_UNSIGNED_BYTE, kLarge, kLarge)) {
        throw std::runtime_error("no OSMesa context");
    }
    OSMesaPixelStore(OSMESA_Y_UP, 0);
    GLuint vertices = 0;
    glGenVertexArrays(1, &vertices);
    glBindVertexArray(vertices);
    glEnable(GL_DEPTH_TEST);
    useProgram();
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::uint32_t> large(std::size_t{kLarge} * kLarge);
    return runHost(argc, argv, [&large](const Scene& scene) {
        makeContext(large);
        return [&](Picture& picture) { render(scene, large, picture); };
    });
}
