// Parameter lists: the variables of primitives and the parameters of shaders.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>

#include "math/color.h"
#include "math/matrix.h"
#include "util/list.h"
#include "util/string.h"

namespace zeb
{

// How many values a variable has on a primitive, by its class.
struct ArgCounts {
    long varying = 1;  // corners
    long uniform = 1;  // faces or patches
    long vertex = 1;   // control points
};

// One variable of a primitive: a private, typed copy of its values. Copies share them.
class ArgAssoc
{
public:
    unsigned short token = 0;

    ArgAssoc(unsigned short token, const void* value, const ArgCounts& counts);
    // The corners of a sub-rectangle of four corner values (of three: of a triangle's corners).
    ArgAssoc(float umin, float umax, float vmin, float vmax, const ArgAssoc& from);
    // The corners of a sub-triangle.
    ArgAssoc(const float (&uv)[6], const ArgAssoc& from);
    // The values at n places.
    ArgAssoc(long n, const long* indices, const ArgAssoc& from);

    long count() const { return fCount; }
    // Words an element.
    long width() const { return fWidth; }
    short storage() const;
    short type() const;
    // The values as 32-bit words, element after element; null for strings and untyped names.
    const float* words() const { return fWords.get(); }
    const String* string() const { return fString.get(); }
    Point point(long i) const;
    Color color(long i) const;

    // Brings points to another space: normals and planes as normals, turned round if flip.
    void project(const Matrix& matrix, bool flip);

    bool operator==(const ArgAssoc& other) const { return token == other.token; }

private:
    ArgAssoc(const ArgAssoc& like, long count);
    template <class Evaluate>
    void interpolate(const ArgAssoc& from, long corner, const Evaluate& evaluate);

    unsigned fCount = 0;
    unsigned fWidth = 0;              // words an element
    std::shared_ptr<float[]> fWords;  // not changed once made
    std::shared_ptr<const String> fString;
};

// The variables of one primitive.
class ArgList
{
public:
    // Whether a list from the host can be read: reports null pointers and values that are not
    // numbers.
    static bool usable(long n, const unsigned short* tokens, void* const* values,
                       const ArgCounts& counts);

    void init(long n, const unsigned short* tokens, void* const* values, const ArgCounts& counts);
    void init(const ArgList& other);
    void project(const Matrix& matrix, bool flip);

    // The list of a sub-rectangle: varying variables are interpolated, others copied.
    void split(float umin, float umax, float vmin, float vmax, const ArgList& from);
    // The list of a sub-triangle given by three (u, v) pairs.
    void split(const float (&uv)[6], const ArgList& from);
    // The list of a face made of the n vertices listed.
    void split(long n, const long* indices, const ArgList& from, long face = 0);

    const ArgAssoc* find(unsigned short token) const;
    void add(ArgAssoc assoc) { fList.add(std::move(assoc)); }
    void detach(unsigned short token);
    bool empty() const { return fList.empty(); }
    auto begin() const { return fList.begin(); }
    auto end() const { return fList.end(); }

private:
    List<ArgAssoc> fList;
};

// One parameter of a shader: its token and the field that holds its value.
struct ParmAssoc {
    unsigned short token = 0;
    void* value = nullptr;

    void override(const ArgAssoc& from);
    void bilerp(float u, float v, const ArgAssoc& corners);
    void barylerp(float u, float v, const ArgAssoc& corners);

    bool operator==(const ParmAssoc& other) const { return token == other.token; }

private:
    template <class Evaluate>
    void interpolate(const ArgAssoc& corners, const Evaluate& evaluate);
};

// The parameters of one shader.
class ParmList
{
public:
    ParmList(std::initializer_list<ParmAssoc> parms)
    {
        for (const ParmAssoc& parm : parms) fList.add(parm);
    }
    // Copies the values of a declaration over the parameters they name, whatever their class.
    void init(const ArgList& declared);
    // Copies uniform variables over the parameters of the same name.
    void override(const ArgList& prim);
    // Interpolates varying variables into the parameters of the same name.
    void bilerp(float u, float v, const ArgList& prim);
    bool names(const ArgList& prim) const;
    bool has(unsigned short token) const { return fList.find({token, nullptr}); }

private:
    ParmAssoc* find(unsigned short token) { return fList.find({token, nullptr}); }
    List<ParmAssoc> fList;
};

// Whether exactly one of the alternatives is among the tokens; reports what is wrong otherwise.
short verify(long n, const unsigned short* tokens, std::initializer_list<unsigned short> required);

}  // namespace zeb
