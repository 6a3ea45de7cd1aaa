// Renders with POV-Ray: writes a scene file, runs the command, and reads its picture and its times.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "host.h"

using namespace zebpeers;

namespace
{

std::ostream& operator<<(std::ostream& out, const Vec& v)
{
    return out << '<' << v[0] << ',' << v[1] << ',' << v[2] << '>';
}

// Its highlights are of the same model, and its roughness is ours.
void writeSettings(std::ostream& out)
{
    out << "#version 3.7;\n"
        << "global_settings { assumed_gamma 1 ambient_light rgb " << kAmbient << " }\n"
        << "camera { location " << kEye << " right x up y angle " << kFieldOfView
        << " look_at <0,0,0> }\n";
    for (const Vec& way : kWays) {
        out << "light_source { " << -1000 * way << " rgb " << kBright
            << " parallel point_at <0,0,0> }\n";
    }
    out << "#default { finish { ambient " << kKa << " diffuse " << kKd << " specular " << kKs
        << " roughness " << kRoughness << " } }\n";
}

template <class List>
void writeList(std::ostream& out, const char* name, const List& list)
{
    out << name << " { " << list.size();
    for (const auto& entry : list) {
        out << ",<" << entry[0] << ',' << entry[1] << ',' << entry[2] << '>';
    }
    out << " }\n";
}

void writeScene(const Scene& scene, const std::string& path)
{
    std::ofstream out(path);
    out.precision(7);
    writeSettings(out);
    for (const Sphere& sphere : scene.spheres) {
        out << "sphere { " << sphere.center << ", " << sphere.radius << " pigment { rgb "
            << sphere.color << " } }\n";
    }
    for (const Mesh& mesh : scene.meshes) {
        out << "mesh2 {\n";
        writeList(out, "vertex_vectors", mesh.points);
        writeList(out, "normal_vectors", mesh.normals);
        writeList(out, "face_indices", mesh.triangles);
        out << "pigment { rgb " << mesh.color << " } }\n";
    }
    if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

// What the command prints.
std::string run(const std::string& command)
{
    std::string printed;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe) throw std::runtime_error("cannot run " + command);
    for (int c; (c = std::fgetc(pipe)) != EOF;) printed += static_cast<char>(c);
    if (pclose(pipe)) throw std::runtime_error(printed);
    return printed;
}

// The seconds of processor time that a phase took.
double seconds(const std::string& printed, const char* phase)
{
    const std::regex line(std::string(phase) + " Time:[^\n]*\n[^\n]*with +([0-9.]+) CPU-seconds");
    std::smatch match;
    if (!std::regex_search(printed, match, line)) return 0;
    return std::stod(match[1]);
}

void readPpm(const std::string& path, Picture& picture)
{
    std::ifstream in(path, std::ios::binary);
    std::string kind;
    int width = 0, height = 0, most = 0;
    in >> kind >> std::ws;
    for (std::string comment; in.peek() == '#';) std::getline(in, comment);
    in >> width >> height >> most;
    in.get();
    if (kind != "P6" || width != kSize || height != kSize || most != 255) {
        throw std::runtime_error("no picture " + path);
    }
    in.read(reinterpret_cast<char*>(picture.bytes.data()),
            static_cast<std::streamsize>(picture.bytes.size()));
}

}  // namespace

// Prints the milliseconds of processor time of parsing, bounding and tracing together, and those of
// tracing alone.
int main(int argc, char** argv)
{
    Scene scene;
    std::string path;
    if (!commandLine(argc, argv, scene, path)) return argc == 1 ? 0 : 2;
    const std::string source = path + ".pov", result = path + ".ppm";
    writeScene(scene, source);
    // One thread, kRate x kRate samples where neighbours differ, no window, light as it is. At
    // quality 3 nothing casts shadows, and no rays look for them.
    std::ostringstream command;
    command << "povray +I" << source << " +O" << result << " +W" << kSize << " +H" << kSize
            << " +WT1 +A0.3 +AM1 +R" << kRate << " +Q3 -D +FP File_Gamma=1";
    const std::string printed = run(command.str());
    Picture picture;
    readPpm(result, picture);
    writePng(picture, path);
    std::remove(source.c_str());
    std::remove(result.c_str());
    const double trace = seconds(printed, "Trace");
    const double all = trace + seconds(printed, "Parse") + seconds(printed, "Bounding");
    std::printf("%.1f %.1f\n", 1e3 * all, 1e3 * trace);
}
