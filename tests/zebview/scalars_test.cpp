// Numbers that vertices have show as the colors of a map.

#include <bit>
#include <cmath>
#include <limits>
#include <map>

#include "gltf_animation.h"
#include "process.h"
#include "spline_models.h"
#include "textured.h"

namespace
{

using zebtest::bytesOf;
using zebtest::Gltf;
using zebtest::Image;
using zebtest::Outcome;
using zebtest::Pixel;

using Words = std::vector<std::string>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr Pixel kGray{128, 128, 128, 255};

// What matplotlib makes of 0, 0.2 and so on up to 1.
using Colors = std::array<Pixel, 6>;
const std::map<std::string, Colors> kMaps{
    {"viridis",
     {{{68, 1, 84, 255},
       {65, 68, 135, 255},
       {42, 120, 142, 255},
       {34, 168, 132, 255},
       {122, 209, 81, 255},
       {253, 231, 37, 255}}}},
    {"plasma",
     {{{13, 8, 135, 255},
       {106, 0, 168, 255},
       {177, 42, 144, 255},
       {225, 100, 98, 255},
       {252, 166, 54, 255},
       {240, 249, 33, 255}}}},
    {"magma",
     {{{0, 0, 4, 255},
       {59, 15, 112, 255},
       {140, 41, 129, 255},
       {222, 73, 104, 255},
       {254, 159, 109, 255},
       {252, 253, 191, 255}}}},
    {"inferno",
     {{{0, 0, 4, 255},
       {66, 10, 104, 255},
       {147, 38, 103, 255},
       {221, 81, 58, 255},
       {252, 165, 10, 255},
       {252, 255, 164, 255}}}},
    {"cividis",
     {{{0, 34, 78, 255},
       {53, 69, 108, 255},
       {102, 105, 112, 255},
       {148, 142, 119, 255},
       {200, 184, 102, 255},
       {254, 232, 56, 255}}}},
    {"turbo",
     {{{48, 18, 59, 255},
       {62, 155, 254, 255},
       {70, 248, 132, 255},
       {225, 221, 55, 255},
       {240, 91, 18, 255},
       {122, 4, 3, 255}}}},
    {"coolwarm",
     {{{59, 76, 192, 255},
       {123, 159, 249, 255},
       {192, 212, 245, 255},
       {242, 203, 183, 255},
       {238, 132, 104, 255},
       {180, 4, 38, 255}}}},
    {"gray",
     {{{0, 0, 0, 255},
       {51, 51, 51, 255},
       {102, 102, 102, 255},
       {153, 153, 153, 255},
       {204, 204, 204, 255},
       {255, 255, 255, 255}}}},
};

std::string number(double value)
{
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    std::ostringstream text;
    text.precision(17);
    text << value;
    return text.str();
}

const std::string kPlaces = "property float x\nproperty float y\nproperty float z\n";
const std::string kFaces = "property list uchar int vertex_indices\n";
const std::string kTriangle = "0 0 0 1\n1 0 0 2\n0 1 0 4\n3 0 1 2\n";

// An ASCII file of vertices with a number q each, and of faces.
std::string plyOf(const std::string& vertices, long count, const std::string& faces = "",
                  long faceCount = 0)
{
    return "ply\nformat ascii 1.0\nelement vertex " + std::to_string(count) + '\n' + kPlaces +
           "property double q\nelement face " + std::to_string(faceCount) + '\n' + kFaces +
           "end_header\n" + vertices + faces;
}

// Squares side by side, each all of one value.
std::string stripes(const std::vector<double>& values)
{
    std::string vertices, faces;
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (const auto& [x, y] : {std::pair(0, 0), {1, 0}, {1, 1}, {0, 1}}) {
            vertices += std::to_string(static_cast<int>(i) + x) + ' ' + std::to_string(y) + " 0 " +
                        number(values[i]) + '\n';
        }
        faces += '4';
        for (std::size_t k = 0; k < 4; ++k) faces += ' ' + std::to_string(4 * i + k);
        faces += '\n';
    }
    const auto count = static_cast<long>(values.size());
    return plyOf(vertices, 4 * count, faces, count);
}

// A square whose left side has the value 0 and whose right side has 1.
std::string slope() { return plyOf("0 0 0 0\n1 0 0 1\n1 1 0 1\n0 1 0 0\n", 4, "4 0 1 2 3\n", 1); }

class Scalars : public zebtest::Zebview
{
protected:
    // Seen from the front, in pure colors.
    Image flat(const std::string& file, Words options, const std::string& said = "") const
    {
        options.insert(options.end(), {"--surface", "constant", "--view", "0,0", "--no-bar"});
        return Image(render(file, options, "x.png", said));
    }
    Image shown(const std::string& ply, Words options = {}, const std::string& said = "") const
    {
        options.insert(options.end(), {"--scalar", "q"});
        return flat(write("a.ply", ply), options, said);
    }
    // At a part of what a shape takes up of a picture.
    static Pixel across(const Image& picture, double part)
    {
        const double x = picture.left + (picture.right + 1 - picture.left) * part;
        return picture.at(static_cast<int>(x), (picture.top + picture.bottom) / 2);
    }
    static void expectColor(const Pixel& found, const Pixel& wanted, int tolerance,
                            const std::string& what)
    {
        for (std::size_t c = 0; c < 4; ++c) {
            EXPECT_NEAR(found[c], wanted[c], tolerance)
                << what << ' ' << testing::PrintToString(found);
        }
    }
    static void expectStripes(const Image& picture, const std::vector<Pixel>& colors, int tolerance,
                              const std::string& what)
    {
        for (std::size_t i = 0; i < colors.size(); ++i) {
            const double part = (static_cast<double>(i) + 0.5) / static_cast<double>(colors.size());
            expectColor(across(picture, part), colors[i], tolerance,
                        what + ' ' + std::to_string(i));
        }
    }
    std::string listed(const std::string& file) const
    {
        const Outcome outcome = run({file, "--scalar", "list"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }
    void isRefused(const std::string& ply, const std::string& why) const
    {
        write("bad.ply", ply);
        for (const char* const name : {"q", "list"}) {
            const Outcome outcome =
                run({"bad.ply", "--scalar", name, "--read-limit", "2", "-o", "bad.png"});
            EXPECT_EQ(outcome.status, 1) << why;
            EXPECT_EQ(outcome.out, "") << why;
            EXPECT_EQ(outcome.err.find("zebview: bad.ply: "), 0u) << outcome.err;
            EXPECT_NE(outcome.err.find(why), std::string::npos) << outcome.err;
            EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
            EXPECT_FALSE(std::filesystem::exists(path("bad.png"))) << why;
        }
    }
};

TEST_F(Scalars, EveryMapShowsItsColors)
{
    for (const auto& [name, colors] : kMaps) {
        const Image picture = shown(stripes({0, 0.2, 0.4, 0.6, 0.8, 1}), {"--colormap", name});
        expectStripes(picture, {colors.begin(), colors.end()}, 3, name);
    }
    const Image usual = shown(stripes({0, 0.2, 0.4, 0.6, 0.8, 1}));
    const Colors& viridis = kMaps.at("viridis");
    expectStripes(usual, {viridis.begin(), viridis.end()}, 3, "default");
}

// Blended, the colors of its ends would be brown in the middle.
TEST_F(Scalars, FacesShowTheirValuesWithinThem)
{
    const Image picture = shown(slope(), {"--size", "320x240"});
    const Colors& viridis = kMaps.at("viridis");
    for (std::size_t i = 1; i < 5; ++i) {
        expectColor(across(picture, 0.2 * static_cast<double>(i)), viridis[i], 4,
                    std::to_string(i));
    }
    expectColor(across(picture, 0.5), {33, 145, 140, 255}, 4, "middle");
    const Image gray = shown(slope(), {"--size", "320x240", "--colormap", "gray"});
    for (double part = 0.05; part < 1; part += 0.05) {
        const int value = static_cast<int>(255 * part);
        expectColor(across(gray, part), {value, value, value, 255}, 2, std::to_string(part));
    }
}

TEST_F(Scalars, ARangeSaysWhereTheColorsBeginAndEnd)
{
    const std::string ply = stripes({-7, 2, 3, 5, 6, 1e300});
    const Image picture = shown(ply, {"--colormap", "gray", "--scalar-range", "2,6"});
    expectStripes(picture,
                  {{0, 0, 0, 255},
                   {0, 0, 0, 255},
                   {64, 64, 64, 255},
                   {191, 191, 191, 255},
                   {255, 255, 255, 255},
                   {255, 255, 255, 255}},
                  1, "range");
    const Image negative =
        shown(stripes({-2, -1}), {"--colormap", "gray", "--scalar-range", "-4,0"});
    expectStripes(negative, {{128, 128, 128, 255}, {191, 191, 191, 255}}, 1, "negative");
}

TEST_F(Scalars, TheLargestAndCloseValuesKeepTheirColors)
{
    const std::vector<Pixel> colors{
        {0, 0, 0, 255}, {64, 64, 64, 255}, {128, 128, 128, 255}, {255, 255, 255, 255}};
    const Words gray{"--colormap", "gray"};
    const double most = std::numeric_limits<double>::max();
    expectStripes(shown(stripes({-most, -most / 2, 0, most}), gray), colors, 1, "largest");
    expectStripes(shown(stripes({1e9, 1e9 + 0.25, 1e9 + 0.5, 1e9 + 1}), gray), colors, 1, "close");
}

TEST_F(Scalars, WhatIsNotFiniteIsGray)
{
    const double infinite = std::numeric_limits<double>::infinity();
    const std::string ply = stripes({3, kNan, 5, infinite, 3, -infinite});
    const Image picture = shown(ply, {"--colormap", "plasma"});
    const Pixel first = kMaps.at("plasma")[0], last = kMaps.at("plasma")[5];
    expectStripes(picture, {first, kGray, last, kGray, first, kGray}, 3, "plasma");
    write("a.ply", ply);
    EXPECT_EQ(listed("a.ply").find("q from 3 to 5\n"), 0u);
}

TEST_F(Scalars, WithoutAFiniteValueAllIsGrayAndThereIsNoBar)
{
    const std::string file = write("a.ply", stripes({kNan, kNan}));
    EXPECT_EQ(listed(file).find("q has no finite values\n"), 0u);
    const Words options{"--scalar", "q",   "--surface", "constant",
                        "--view",   "0,0", "--size",    "300x300"};
    const Image picture(render(file, options));
    expectStripes(picture, {kGray, kGray}, 1, "nothing");
    Words bare = options;
    bare.push_back("--no-bar");
    EXPECT_TRUE(picture == Image(render(file, bare)));
    // With a range there is something that colors could stand for.
    bare.back() = "--scalar-range";
    bare.push_back("0,1");
    EXPECT_FALSE(picture == Image(render(file, bare)));
}

TEST_F(Scalars, EqualValuesAreTheMiddle)
{
    const Image picture = shown(stripes({-5, -5}));
    expectStripes(picture, {{33, 145, 140, 255}, {33, 145, 140, 255}}, 3, "equal");
}

// Every type, under both of its names, in every format, with lists around and between.
TEST_F(Scalars, EveryTypeIsRead)
{
    const std::string header =
        "comment end_header\nobj_info 1 2\nelement material 2\nproperty list uint8 float32 l\n"
        "property int a\nelement vertex 3\nproperty char c\nproperty int8 c2\nproperty double x\n"
        "property uchar C\nproperty uint8 C2\nproperty list ushort int16 m\nproperty float y\n"
        "property short s1\nproperty int16 s2\nproperty float z\nproperty ushort S\n"
        "property uint16 S2\nproperty int i\nproperty int32 i2\nproperty uint I\n"
        "property uint32 I2\nproperty list int32 float64 n\nproperty float f\nproperty float32 f2\n"
        "property double d\nproperty float64 d2\nelement face 1\n" +
        kFaces + "end_header\n";
    const std::string wanted =
        "c from -128 to -126\nc2 from 125 to 127\nC from 253 to 255\nC2 from 0 to 2\n"
        "s1 from -32768 to -32766\ns2 from 32765 to 32767\nS from 65533 to 65535\nS2 from 7 to 9\n"
        "i from -2.14748365e+09 to -2.14748365e+09\ni2 from 70000 to 70002\n"
        "I from 4.29496729e+09 to 4.2949673e+09\nI2 from 1 to 3\nf from -1.5 to 0.5\n"
        "f2 from 1.00000002e+30 to 1.00000002e+30\nd from 0.1 to 2.1\nd2 from 1e-300 to 2\n"
        "x from 0 to 1\ny from 0 to 1\nz from 0 to 0\n";
    enum Kind { kText, kLittle, kBig };
    for (const Kind kind : {kText, kLittle, kBig}) {
        for (const bool hasReturns : {false, true}) {
            std::string data;
            const auto put = [&](auto value) {
                if (kind == kText) {
                    data += number(static_cast<double>(value)) + ' ';
                    return;
                }
                std::string bytes = bytesOf(std::vector{value});
                const bool isLittle = std::endian::native == std::endian::little;
                if (isLittle != (kind == kLittle)) std::reverse(bytes.begin(), bytes.end());
                data += bytes;
            };
            const auto end = [&] {
                if (kind == kText) data += hasReturns ? "\r\n" : "\n";
            };
            for (int i = 0; i < 2; ++i) {
                put(static_cast<std::uint8_t>(2 * i));
                for (int k = 0; k < 2 * i; ++k) put(1.0f);
                put(std::int32_t{13});
                end();
            }
            for (int i = 0; i < 3; ++i) {
                put(static_cast<std::int8_t>(-128 + i));
                put(static_cast<std::int8_t>(125 + i));
                put(i == 1 ? 1.0 : 0.0);
                put(static_cast<std::uint8_t>(253 + i));
                put(static_cast<std::uint8_t>(i));
                put(static_cast<std::uint16_t>(i));
                for (int k = 0; k < i; ++k) put(std::int16_t{-1});
                put(i == 2 ? 1.0f : 0.0f);
                put(static_cast<std::int16_t>(-32768 + i));
                put(static_cast<std::int16_t>(32765 + i));
                put(0.0f);
                put(static_cast<std::uint16_t>(65533 + i));
                put(static_cast<std::uint16_t>(7 + i));
                put(std::numeric_limits<std::int32_t>::min() + i);
                put(std::int32_t{70000 + i});
                put(static_cast<std::uint32_t>(4294967290 + 5 * i / 2));
                put(static_cast<std::uint32_t>(1 + i));
                put(std::int32_t{2 - i});
                for (int k = 0; k < 2 - i; ++k) put(0.5);
                put(static_cast<float>(i) - 1.5f);
                put(1e30f);
                put(0.1 + i);
                put(i == 0 ? 1e-300 : static_cast<double>(i));
                end();
            }
            put(std::uint8_t{3});
            for (int i = 0; i < 3; ++i) put(std::int32_t{i});
            end();
            static constexpr const char* formats[] = {"ascii", "binary_little_endian",
                                                      "binary_big_endian"};
            std::string start = std::string("ply\nformat ") + formats[kind] + " 1.0\n" + header;
            if (hasReturns) {
                for (std::size_t at = 0; (at = start.find('\n', at)) != start.npos; at += 2) {
                    start.replace(at, 1, "\r\n");
                }
            }
            EXPECT_EQ(listed(write("a.ply", start + data)), wanted)
                << formats[kind] << ' ' << hasReturns;
        }
    }
}

TEST_F(Scalars, OnlyWhatHasNoOtherMeaningIsAScalar)
{
    std::string header = "ply\nformat ascii 1.0\nelement vertex 3\n", row;
    for (const char* const name :
         {"nx", "ny", "nz", "s", "t", "u", "v", "texture_u", "texture_v", "Red", "w"}) {
        header += std::string("property float ") + name + '\n';
        row += " 1";
    }
    for (const char* const name : {"red", "green", "blue", "alpha"}) {
        header += std::string("property uchar ") + name + '\n';
        row += " 9";
    }
    header += kPlaces + "property list uchar int w2\nproperty float w\nelement face 1\n" + kFaces +
              "property float onFaces\nend_header\n";
    write("a.ply", header + row + " 0 0 0 0 5\n" + row + " 1 0 0 0 6\n" + row + " 0 1 0 0 7\n" +
                       "3 0 1 2 8\n");
    EXPECT_EQ(listed("a.ply"),
              "Red from 1 to 1\nw from 1 to 1\nx from 0 to 1\ny from 0 to 1\n"
              "z from 0 to 0\n");
}

TEST_F(Scalars, ValuesGoWithTheVerticesOfTheFile)
{
    // Stray vertices, equal ones, those that face names in another order, and blank lines.
    const std::string ply = plyOf("9 9 9 100\n0 0 0 1\n1 0 0 0\n1 0 0 7 8 9\n\n1 1 0 0\n0 1 0 1\n",
                                  6, "4 5 1 2 4\n", 1);
    const Image picture = shown(ply, {"--colormap", "gray"});
    expectStripes(
        picture, {{223, 223, 223, 255}, {159, 159, 159, 255}, {96, 96, 96, 255}, {32, 32, 32, 255}},
        2, "order");
    EXPECT_EQ(listed("a.ply").find("q from 0 to 1\n"), 0u);
}

TEST_F(Scalars, NumbersBeyondADoubleAreInfiniteOrNothing)
{
    const std::string ply = plyOf("0 0 0 1e-999\n1 0 0 +2\n0 1 0 1e999\n", 3, "3 0 1 2\n", 1);
    EXPECT_EQ(listed(write("a.ply", ply)).find("q from 0 to 2\n"), 0u);
}

TEST_F(Scalars, NamesMayBeOdd)
{
    std::string ply = plyOf(kTriangle, 3, "", 1);
    const std::string name = "my 'q' \x1b[31m \xc3\xa9, %s";
    ply.replace(ply.find("double q"), 8, "double \t " + name + "  ");
    const std::string file = write("a.ply", ply);
    EXPECT_EQ(listed(file).find("my 'q'  [31m \xc3\xa9, %s from 1 to 4\n"), 0u) << listed(file);
    const Image picture = flat(file, {"--scalar", name});
    EXPECT_GT(picture.coverage(), 0.1);
    EXPECT_EQ(run({file, "--scalar", "my", "-o", "x.png"}).status, 1);
}

TEST_F(Scalars, DamagedFilesAreRefused)
{
    const std::string good = plyOf(kTriangle, 3, "", 1);
    const auto changed = [&](const std::string& what, const std::string& by) {
        std::string ply = good;
        return ply.replace(ply.find(what), what.size(), by);
    };
    EXPECT_EQ(listed(write("good.ply", good)).find("q from 1 to 4\n"), 0u);
    for (const char* const count : {"-3", "x"}) {
        isRefused(changed("vertex 3", std::string("vertex ") + count), "cannot be read");
    }
    isRefused(changed("end_header\n", ""), "its header does not end");
    isRefused(changed("end_header\n", "end_header"), "cannot be read");
    isRefused(changed("vertex 3", "vertex 40"), "it ends before its vertices do");
    isRefused(changed("double q", "duoble q"), "its header names a type that does not exist");
    isRefused(changed("list uchar", "list number"), "cannot be read");
    isRefused(changed("property double q", "property double"), "cannot be read");
    isRefused(changed("element face 1", "element face"), "cannot be read");
    isRefused(changed("property double q", "property double q\nproprety float p"),
              "its header has a line that is not understood");
    isRefused(changed("1 0 0 2\n", "1 0 0\n"), "cannot be read");
    isRefused(changed("1 0 0 2\n", "1 0 0 2x\n"), "a value of it is no number");
    // Assimp reads what lies there as points.
    std::string binary = "ply\nformat binary_little_endian 1.0\nelement vertex 3\n" + kPlaces +
                         "property float q\nend_header\n" +
                         bytesOf(std::vector<float>{0, 0, 0, 1, 1, 0, 0, 2, 0, 1, 0});
    isRefused(binary, "it ends before its vertices do");
#ifndef ZEB_SANITIZED
    // Asked for so much, the sanitizers' heap ends the program.
    for (const char* const count : {"1000000000000000000", "99999999999999999999"}) {
        isRefused(changed("vertex 3", std::string("vertex ") + count), "cannot be read");
    }
    const std::string lists = "ply\nformat binary_little_endian 1.0\nelement vertex 1\n" + kPlaces +
                              "property list uint uchar l\nproperty float q\nend_header\n" +
                              bytesOf(std::vector<float>{0, 0, 0}) + std::string(8, '\xff');
    isRefused(lists, "cannot be read");
#endif
}

// Elements that take up nothing may be as many as they like.
TEST_F(Scalars, EmptyElementsAreNotCounted)
{
    std::string ply = plyOf(kTriangle, 3, "", 1);
    ply.replace(ply.find("element vertex"), 0, "element nothing 0\n");
    EXPECT_EQ(listed(write("a.ply", ply)).find("q from 1 to 4\n"), 0u);
    ply.replace(ply.find("nothing 0"), 9, "nothing 1000000000000");
    const Outcome outcome = run({write("a.ply", ply), "--scalar", "q", "-o", "x.png"});
    EXPECT_LE(outcome.status, 1);
    EXPECT_LE(outcome.errorLines(), 1) << outcome.err;
}

// Assimp takes the number by its last 32 bits.
TEST_F(Scalars, WithOtherVerticesThanTheFilesItsColorsStay)
{
    std::string ply = plyOf(kTriangle, 3, "", 1);
    ply.replace(ply.find("vertex 3"), 8, "vertex 4294967299");
    const std::string said =
        "zebview: a.ply: its scalars are not shown: they do not go with its vertices\n";
    const Image picture = shown(ply, {}, said);
    EXPECT_TRUE(picture == flat("a.ply", {}));
    EXPECT_GT(picture.coverage(), 0.1);
    const Outcome list = run({"a.ply", "--scalar", "list"});
    EXPECT_EQ(list.err, said);
    EXPECT_EQ(list.out, "x from 0 to 1\ny from 0 to 1\nz from 0 to 0\n");
}

TEST_F(Scalars, CoordinatesAreThoseOfTheFile)
{
    // Seen from the front its y goes to the right and its z up.
    const std::string file = write("a.obj", "v 0 10 1\nv 0 14 1\nv 0 14 3\nv 0 10 3\nf 1 2 3 4\n");
    EXPECT_EQ(listed(file), "x from 0 to 0\ny from 10 to 14\nz from 1 to 3\n");
    const auto view = [&](const char* name) {
        return Image(render(file, {"--up", "z", "--view", "90,0", "--scalar", name, "--surface",
                                   "constant", "--colormap", "gray", "--no-bar"}));
    };
    const Image y = view("y"), z = view("z"), x = view("x");
    for (const double part : {0.1, 0.3, 0.5, 0.7, 0.9}) {
        const int value = static_cast<int>(255 * part);
        expectColor(across(y, part), {value, value, value, 255}, 3, "y");
        const int row = static_cast<int>(z.top + (z.bottom + 1 - z.top) * (1 - part));
        expectColor(z.at(z.width / 2, row), {value, value, value, 255}, 4, "z");
        expectColor(across(x, part), kGray, 1, "x");
    }
}

// A number of the vertices that is a coordinate shows as that does, from any side.
TEST_F(Scalars, CoordinatesAreNumbersLikeOthers)
{
    for (const std::size_t axis : {0, 1, 2}) {
        std::string vertices;
        for (const auto& [x, y, z] : {std::array{0, 0, 1}, {2, 0, 1}, {2, 1, 4}, {0, 1, 4}}) {
            const int place[3] = {x, y, z};
            for (const int value : {x, y, z, place[axis]}) vertices += std::to_string(value) + ' ';
            vertices += '\n';
        }
        const std::string file = write("a.ply", plyOf(vertices, 4, "4 0 1 2 3\n", 1));
        const auto seen = [&](const std::string& name) {
            return Image(
                render(file, {"--view", "40,25", "--surface", "constant", "--scalar", name}));
        };
        EXPECT_LE(zebtest::difference(seen("q"), seen(std::string(1, "xyz"[axis]))), 2) << axis;
    }
}

TEST_F(Scalars, InstancesShowTheirOwnCoordinates)
{
    Gltf file;
    file.nodes = R"({"mesh":0,"scale":[0.5,0.5,1],"translation":[-1,0,0]},)"
                 R"({"mesh":0,"scale":[0.5,0.5,1],"translation":[1,0,0]})";
    file.nodeCount = 2;
    file.scene = "0,1";
    write("a.gltf", file.text());
    EXPECT_EQ(listed("a.gltf"), "x from -1.5 to 1.5\ny from -0.5 to 0.5\nz from 0 to 0\n");
    const Image picture(
        render("a.gltf", {"--camera", "eye", "--light", "camera", "--scalar", "x", "--surface",
                          "constant", "--colormap", "gray", "--no-bar", "--size", "200x200"}));
    for (const double x : {-1.4, -1.0, -0.6, 0.6, 1.0, 1.4}) {
        const int value = static_cast<int>(std::lround(255 * (x + 1.5) / 3));
        expectColor(picture.at(static_cast<int>(100 + 50 * x), 100), {value, value, value, 255}, 2,
                    std::to_string(x));
    }
}

// The colors mean the same in all frames.
TEST_F(Scalars, WhatMovesHasOneRange)
{
    Gltf file;
    file.animate(0, "translation", {0, 1}, {0, 0, 0, 4, 0, 0}, "VEC3");
    write("a.gltf", file.text());
    const Outcome outcome = run({"a.gltf", "--time", "0:1", "--frames", "2", "--scalar", "x", "-v",
                                 "-o", "%d.png", "--size", "20x20"});
    EXPECT_NE(outcome.err.find("zebview: a.gltf: scalar x from -1 to 3\n"), std::string::npos)
        << outcome.err;
}

TEST_F(Scalars, ASkinShowsItsCoordinatesAsItIsBent)
{
    Gltf file;
    file.attributes = R"(,"JOINTS_0":3,"WEIGHTS_0":4)";
    file.add<std::uint16_t>(std::vector<std::uint16_t>(16, 0), 5123, "VEC4");
    file.addFloats({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, "VEC4");
    file.nodes = R"({"mesh":0,"skin":0},{"name":"bone","translation":[0,5,0]})";
    file.nodeCount = 2;
    file.scene = "0,1";
    const int inverse = file.addFloats({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "MAT4");
    file.more =
        R"(,"skins":[{"joints":[1],"inverseBindMatrices":)" + std::to_string(inverse) + "}]";
    EXPECT_EQ(listed(write("a.gltf", file.text())),
              "x from -1 to 1\ny from 4 to 6\nz from 0 to 0\n");
}

TEST_F(Scalars, PointsShowTheirs)
{
    const std::string file = write("a.ply", plyOf("0 0 0 2\n1 0 0 4\n2 0 0 nan\n3 0 0 3\n", 4));
    const Words options{"--colormap", "gray", "--point-size", "1"};
    const auto view = [&](const char* name) {
        Words words = options;
        words.insert(words.end(), {"--scalar", name});
        return flat(file, words);
    };
    expectStripes(view("q"), {{0, 0, 0, 255}, {255, 255, 255, 255}, kGray, kGray}, 1, "q");
    // A point is all of one color.
    const Image x = view("x");
    for (const double part : {0.3, 0.37, 0.45}) {
        expectColor(across(x, part), {85, 85, 85, 255}, 1, "x");
    }
}

TEST_F(Scalars, LinesShowTheirs)
{
    const std::string file = write("a.obj", "v 0 0 0\nv 1 0 0\nl 1 2\n");
    const Image picture =
        flat(file, {"--scalar", "x", "--colormap", "viridis", "--line-width", "20"});
    for (std::size_t i = 1; i < 5; ++i) {
        expectColor(across(picture, 0.2 * static_cast<double>(i)), kMaps.at("viridis")[i], 10,
                    std::to_string(i));
    }
}

TEST_F(Scalars, FreeFormSurfacesShowTheirCoordinates)
{
    const std::string file =
        write("a.obj",
              "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 3 0 0\nv 0 1 0\nv 1 1 0\nv 2 1 0\nv 3 1 0\n"
              "cstype bspline\ndeg 3 1\nsurf 0 1 0 1 1 2 3 4 5 6 7 8\nparm u 0 0 0 0 1 1 1 1\n"
              "parm v 0 0 1 1\nend\n");
    const Image picture = flat(file, {"--scalar", "x", "--colormap", "gray"});
    expectStripes(
        picture, {{32, 32, 32, 255}, {96, 96, 96, 255}, {159, 159, 159, 255}, {223, 223, 223, 255}},
        3, "surface");
}

// As if the model had the color.
TEST_F(Scalars, LightIsAsItWas)
{
    write("around.hdr",
          "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 4 +X 8\n" + std::string(32 * 4, '\x80'));
    std::string ply =
        plyOf("0 0 0 3\n1 0 0 3\n0 1 0 3\n0 0 1 3\n", 4, "3 0 2 1\n3 0 1 3\n3 0 3 2\n3 1 2 3\n", 4);
    write("a.ply", ply);
    for (const Words& more : {Words{},
                              {"--shadows"},
                              {"--surface", "diffuse"},
                              {"--surface", "metal"},
                              {"--surface", "plastic"},
                              {"--surface", "constant"},
                              {"--environment", "around.hdr"},
                              {"--environment", "around.hdr", "--surface", "metal"},
                              {"--environment", "around.hdr", "--surface", "constant"}}) {
        Words options{"--color", "0.5,0.5,0.5"};
        options.insert(options.end(), more.begin(), more.end());
        const Image plain(render("a.ply", options, "plain.png"));
        options[0] = "--scalar";
        options[1] = "q";
        options.insert(options.end(), {"--colormap", "gray", "--no-bar"});
        const Image scalar(render("a.ply", options, "scalar.png"));
        EXPECT_LE(difference(plain, scalar), 1) << testing::PrintToString(more);
        EXPECT_GT(plain.coverage(), 0.1);
    }
}

// Those of vertices, of the material and of textures.
TEST_F(Scalars, TakesThePlaceOfAllOtherColors)
{
    zebtest::GltfPlate plate;
    plate.colors = {1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 1, 1, 0, 1};
    plate.places = {0, 1, 1, 1, 1, 0, 0, 0};
    plate.material =
        R"({"pbrMetallicRoughness":{"baseColorFactor":[0.3,0.6,0.9,1],"baseColorTexture":{"index":0}}})";
    plate.extra = R"(,"textures":[{"source":0}],"images":[{"uri":"fields.png"}])";
    write("fields.png", zebtest::fieldsPng());
    write("a.gltf", plate.text());
    const Words view{"--view", "0,0", "--no-bar"};
    const auto with = [&](Words options) {
        options.insert(options.end(), view.begin(), view.end());
        return Image(render("a.gltf", options));
    };
    const Image scalar = with({"--scalar", "z", "--colormap", "gray"});
    EXPECT_LE(difference(scalar, with({"--color", "0.5,0.5,0.5"})), 1);
    EXPECT_GT(difference(scalar, with({})), 30);
}

TEST_F(Scalars, ListsThoseOfEveryModel)
{
    write("a.ply", plyOf(kTriangle, 3, "", 1));
    write("b.obj", "v 0 0 0\nv 1 0 0\nv 0 2.5 0\nf 1 2 3\n");
    const Outcome outcome = run({"a.ply", "b.obj", "--scalar", "list"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "a.ply:\nq from 1 to 4\nx from 0 to 1\ny from 0 to 1\nz from 0 to 0\n"
              "b.obj:\nx from 0 to 1\ny from 0 to 2.5\nz from 0 to 0\n");
}

TEST_F(Scalars, WrongUsage)
{
    write("a.ply", plyOf(kTriangle, 3, "", 1));
    write("b.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const auto isWrong = [&](Words options, int status, const std::string& why) {
        options.insert(options.end(), {"-o", "x.png", "--size", "20x20"});
        const Outcome outcome = run(options);
        EXPECT_EQ(outcome.status, status) << why;
        EXPECT_NE(outcome.err.find(why), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.errorLines(), 1) << outcome.err;
    };
    isWrong({"a.ply", "--scalar", "q", "--color", "1,0,0"}, 2, "--color");
    isWrong({"a.ply", "--scalar", ""}, 2, "there is no scalar without a name");
    isWrong({"a.ply", "--scalar", "q", "--colormap", "rainbow"}, 2, "rainbow");
    for (const char* const range : {"1", "5,1", "1,1", "nan,1", "0,inf", "a,b", "1,2,3"}) {
        isWrong({"a.ply", "--scalar", "q", "--scalar-range", range}, 2,
                "is not two numbers, the first less than the second, as 0,5");
    }
    isWrong({"a.ply", "--scalar", "p"}, 1,
            "zebview: a.ply: it has no scalar 'p': --scalar list names those it has");
    isWrong({"a.ply", "b.obj", "--scalar", "q"}, 1, "zebview: b.obj: it has no scalar 'q'");
    EXPECT_EQ(files(), (Words{"a.ply", "b.obj"}));
}

TEST_F(Scalars, AreTold)
{
    write("a.ply", plyOf(kTriangle, 3, "", 1));
    Words words{"a.ply", "-v", "--scalar", "q", "-o", "x.png", "--size", "8x8"};
    EXPECT_NE(run(words).err.find("zebview: a.ply: scalar q from 1 to 4\n"), std::string::npos);
    words.insert(words.end(), {"--scalar-range", "0,2"});
    EXPECT_NE(run(words).err.find("zebview: a.ply: scalar q from 1 to 4, shown from 0 to 2\n"),
              std::string::npos);
}

// Pictures of 800 x 600 pixels of a dark plate with a bar. That one goes from y = 480, its least
// value, up to 120, and from x = 740 to 770; numbers end at 717.5 and are 22.8 pixels high.
class Bar : public Scalars
{
protected:
    Image bar(const std::string& range, const std::string& map = "gray") const
    {
        write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        return Image(
            render("a.obj", {"--scalar", "z", "--scalar-range", range, "--colormap", map, "--size",
                             "800x600", "--background", "0,0,0", "--samples", "4"}));
    }
    // Between the middles of pixels too.
    static bool isInk(const Image& picture, double x, double y)
    {
        const double left = std::floor(x - 0.5), top = std::floor(y - 0.5);
        const auto at = [&](double right, double down) {
            return picture.brightness(static_cast<int>(left + right), static_cast<int>(top + down));
        };
        const double across = x - 0.5 - left, along = y - 0.5 - top;
        const double upper = std::lerp(at(0, 0), at(1, 0), across);
        const double lower = std::lerp(at(0, 1), at(1, 1), across);
        return std::lerp(upper, lower, along) > 128;
    }
    // What there is of the strokes of a letter: along its top, above its middle, in it, below it,
    // and at its foot; of narrow ones along the middle alone. No digit comes by a place closely
    // without going through it.
    static std::string strokes(const Image& picture, double x, double y, bool isNarrow)
    {
        using Places = std::vector<std::pair<double, double>>;
        static const std::vector<Places> wide{{{-0.6, 1}, {0, 1}},
                                              {{-0.6, 0.35}, {0, 0.6}, {0.55, 0.5}},
                                              {{-0.02, 0.03}},
                                              {{-0.6, -0.35}, {0, -0.35}, {0.6, -0.35}},
                                              {{0, -1}}};
        static const std::vector<Places> narrow{
            {{0, 1}}, {{0, 0.6}}, {{-0.02, 0.03}}, {{0, -0.35}}, {{0, -1}}};
        std::string text;
        for (const Places& row : isNarrow ? narrow : wide) {
            for (const auto& [right, up] : row) {
                text += isInk(picture, x + 11.4 * right, y - 11.4 * up) ? '#' : '.';
            }
            text += ' ';
        }
        return text;
    }
    // The number that ends beside a place of the bar.
    static std::string textAt(const Image& picture, double y)
    {
        static const std::map<std::string, char> narrow{{". . # . . ", '-'}, {". . . . # ", '.'}};
        static const std::map<std::string, char> wide{
            {".# #.# . #.# # ", '0'}, {".# .#. # .#. # ", '1'}, {".# ..# . .#. # ", '2'},
            {".# ..# # ..# # ", '3'}, {".. .#. . ### . ", '4'}, {"## #.. # ..# # ", '5'},
            {".# #.. # #.# # ", '6'}, {"## ..# . .#. # ", '7'}, {".# #.# # #.# # ", '8'},
            {".# #.# # ..# # ", '9'}, {".. ... . ### # ", 'e'}};
        std::string text;
        double x = 717.5;
        while (true) {
            const auto sign = narrow.find(strokes(picture, x - 4.56, y, true));
            if (sign != narrow.end() && sign->second == '.') {
                text.insert(0, 1, '.');
                x -= 2 * 4.56;
                continue;
            }
            const auto minus = narrow.find(strokes(picture, x - 7.98, y, true));
            if (minus != narrow.end() && minus->second == '-') {
                text.insert(0, 1, '-');
                x -= 2 * 7.98;
                continue;
            }
            const auto digit = wide.find(strokes(picture, x - 10.83, y, false));
            if (digit == wide.end()) return text;
            text.insert(0, 1, digit->second);
            x -= 2 * 10.83;
        }
    }
    // The ticks beside a bar, from the least: where they are, from 0 to 1, and their numbers.
    static std::vector<std::pair<double, std::string>> ticks(const Image& picture)
    {
        std::vector<std::pair<double, std::string>> found;
        double sum = 0, moment = 0;
        for (int y = 599; y > 0; --y) {
            // Black halos part it from all others.
            const double light = std::max(picture.brightness(731, y) - 26, 0);
            sum += light;
            moment += light * (y + 0.5);
            if (light > 0 || sum == 0) continue;
            const double middle = moment / sum;
            found.emplace_back((480 - middle) / 360, textAt(picture, middle));
            sum = moment = 0;
        }
        return found;
    }
    void expectTicks(const std::string& range, double least, double most,
                     const Words& numbers) const
    {
        const auto found = ticks(bar(range));
        ASSERT_EQ(found.size(), numbers.size()) << range << testing::PrintToString(found);
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            EXPECT_EQ(found[i].second, numbers[i]) << range;
            // Quarters, since the largest numbers have no difference.
            const double place = (std::stod(numbers[i]) / 4 - least / 4) / (most / 4 - least / 4);
            EXPECT_NEAR(found[i].first, place, 0.5 / 360) << range << ' ' << numbers[i];
        }
    }
};

TEST_F(Bar, ShowsTheMapFromItsLeastValueUp)
{
    const Image gray = bar("0,1");
    for (int y = 122; y < 478; y += 7) {
        const int value = static_cast<int>(std::lround(255 * (479.5 - y) / 360));
        for (const int x : {742, 755, 768}) {
            expectColor(gray.at(x, y), {value, value, value, 255}, 2, std::to_string(y));
        }
    }
    const Image viridis = bar("0,1", "viridis");
    for (int i = 1; i < 5; ++i) {
        expectColor(viridis.at(755, 480 - 72 * i), kMaps.at("viridis")[static_cast<std::size_t>(i)],
                    4, std::to_string(i));
    }
    // Around it there is a dark frame, and nothing beyond.
    for (const auto& [x, y] : {std::pair(737, 300), {772, 300}, {755, 117}, {755, 482}}) {
        expectColor(viridis.at(x, y), {26, 26, 26, 255}, 2, "frame");
    }
    for (const auto& [x, y] : {std::pair(778, 300), {755, 110}, {755, 490}}) {
        expectColor(viridis.at(x, y), {0, 0, 0, 255}, 0, "beyond");
    }
}

TEST_F(Bar, TicksAreAtRoundValues)
{
    expectTicks("0,1", 0, 1, {"0", "0.2", "0.4", "0.6", "0.8", "1"});
    expectTicks("-0.3,0.58", -0.3, 0.58, {"-0.2", "0", "0.2", "0.4"});
    expectTicks("0,7", 0, 7, {"0", "1", "2", "3", "4", "5", "6", "7"});
    expectTicks("1,39", 1, 39, {"5", "10", "15", "20", "25", "30", "35"});
    expectTicks("7,9", 7, 9, {"7", "7.5", "8", "8.5", "9"});
    expectTicks("123.34,123.35", 123.34, 123.35,
                {"123.34", "123.342", "123.344", "123.346", "123.348", "123.35"});
    expectTicks("-3e9,3e9", -3e9, 3e9, {"-3e9", "-2e9", "-1e9", "0", "1e9", "2e9", "3e9"});
    expectTicks("1e-8,4e-8", 1e-8, 4e-8,
                {"1e-8", "1.5e-8", "2e-8", "2.5e-8", "3e-8", "3.5e-8", "4e-8"});
    expectTicks("99999,300001", 99999, 300001, {"100000", "150000", "200000", "250000", "300000"});
    expectTicks("1e9,1000000004", 1e9, 1000000004,
                {"1000000000", "1000000000.5", "1000000001", "1000000001.5", "1000000002",
                 "1000000002.5", "1000000003", "1000000003.5", "1000000004"});
    // As far as numbers go.
    expectTicks("-1.7e308,1.7e308", -1.7e308, 1.7e308,
                {"-1.5e308", "-1e308", "-5e307", "0", "5e307", "1e308", "1.5e308"});
}

TEST_F(Bar, OneValueHasOneTick)
{
    write("a.obj", "v 0 0 2.5\nv 1 0 2.5\nv 0 1 2.5\nf 1 2 3\n");
    const auto found = ticks(Image(render("a.obj", {"--scalar", "z", "--size", "800x600",
                                                    "--background", "0,0,0", "--samples", "4"})));
    ASSERT_EQ(found.size(), 1u);
    EXPECT_NEAR(found[0].first, 0.5, 1e-3);
    EXPECT_EQ(found[0].second, "2.5");
}

// Numbers and all.
TEST_F(Bar, LeavesTheRestAsItIs)
{
    write("a.ply", slope());
    for (const Words& view : {Words{}, {"--adaptive", "0.001"}}) {
        Words options{"--scalar", "q", "--size", "400x300"};
        options.insert(options.end(), view.begin(), view.end());
        const Image with(render("a.ply", options));
        options.push_back("--no-bar");
        const Image without(render("a.ply", options));
        int covered = 0;
        for (int y = 0; y < 300; ++y) {
            for (int x = 0; x < 400; ++x) {
                covered += x >= 315 && with.alpha(x, y) == 255;
                if (x >= 315) continue;
                for (std::size_t c = 0; c < 4; ++c) {
                    ASSERT_NEAR(with.at(x, y)[c], without.at(x, y)[c], 1) << x << ' ' << y;
                }
            }
        }
        EXPECT_GT(covered, 15 * 180);
    }
}

TEST_F(Bar, LiesInFrontOfEverything)
{
    Gltf file;
    file.nodes = R"({"mesh":0,"scale":[9,9,9]})";
    write("a.gltf", file.text());
    const Words options{"--camera", "eye",        "--light", "camera", "--scalar",
                        "z",        "--colormap", "gray",    "--size", "400x300"};
    const Image picture(render("a.gltf", options));
    EXPECT_EQ(picture.alpha(200, 150), 255);
    for (int y = 65; y < 240; y += 10) {
        const int value = static_cast<int>(std::lround(255 * (239.5 - y) / 180));
        expectColor(picture.at(377, y), {value, value, value, 255}, 3, std::to_string(y));
    }
}

TEST_F(Bar, IsOnlyWhereItCanBeRead)
{
    write("a.ply", slope());
    const auto hasBar = [&](Words options) {
        options.insert(options.end(), {"--scalar", "q"});
        const Image with(render("a.ply", options));
        options.push_back("--no-bar");
        return !(with == Image(render("a.ply", options)));
    };
    EXPECT_TRUE(hasBar({"--size", "240x240"}));
    EXPECT_FALSE(hasBar({"--size", "239x400"}));
    EXPECT_FALSE(hasBar({"--size", "400x239"}));
    EXPECT_FALSE(hasBar({"--size", "300x300", "--channels", "alpha"}));
    EXPECT_FALSE(hasBar({"--size", "300x300", "--channels", "depth"}));
}

}  // namespace
