// Everything that makes geometry, and the blocks around it.

#include "player.h"

namespace zebfuzz
{

namespace
{

// Now and then the first array of a list is said to be as short, or as spread out, as it may be.
void describe(Player& p, const Player::List& list)
{
    if (!p.in.oneIn(4)) return;
    const long count = p.in.upTo(40), stride = p.in.upTo(24);
    zebArray(list.values[0], count, stride);
}

void polygon(Player& p)
{
    const long n = p.in.oneIn(4) ? p.in.count() : 3 + static_cast<long>(p.in.upTo(4));
    const Player::List list = p.list(true);
    describe(p, list);
    if (p.in.oneIn(2)) {
        list.spread([&](auto... pairs) { zebPolygon(n, pairs...); });
    } else {
        zebPolygonV(n, list.n, list.tokenArray, list.valueArray);
    }
}

// A square that is seen more often than not.
void square(Player& p)
{
    const float z = static_cast<float>(p.in.upTo(16)) / 2;
    const float size = static_cast<float>(1 + p.in.upTo(16)) / 2;
    const float points[12] = {-size, -size, z, size, -size, z, size, size, z, -size, size, z};
    zebPolygon(4, zebQuark("point"), points, 0);
}

long faces(Player& p) { return p.in.oneIn(4) ? p.in.count() : 1 + static_cast<long>(p.in.upTo(3)); }

void generalPolygon(Player& p)
{
    const long n = faces(p);
    const std::vector<long> sizes = p.longs(false);
    const long* counts = p.in.oneIn(16) ? nullptr : sizes.data();
    const Player::List list = p.list(true);
    describe(p, list);
    if (p.in.oneIn(2)) {
        list.spread([&](auto... pairs) { zebGeneralPolygon(n, counts, pairs...); });
    } else {
        zebGeneralPolygonV(n, counts, list.n, list.tokenArray, list.valueArray);
    }
}

void polygonMesh(Player& p)
{
    const long n = faces(p);
    const std::vector<long> sizes = p.longs(false), indices = p.longs(true);
    const long* counts = p.in.oneIn(16) ? nullptr : sizes.data();
    const long* vertices = p.in.oneIn(16) ? nullptr : indices.data();
    const Player::List list = p.list(true);
    describe(p, list);
    if (p.in.oneIn(2)) {
        list.spread([&](auto... pairs) { zebPolygonMesh(n, counts, vertices, pairs...); });
    } else {
        zebPolygonMeshV(n, counts, vertices, list.n, list.tokenArray, list.valueArray);
    }
}

void generalPolygonMesh(Player& p)
{
    const long n = faces(p);
    const std::vector<long> loops = p.longs(false), sizes = p.longs(false), indices = p.longs(true);
    const long* loopCounts = p.in.oneIn(16) ? nullptr : loops.data();
    const long* counts = p.in.oneIn(16) ? nullptr : sizes.data();
    const long* vertices = p.in.oneIn(16) ? nullptr : indices.data();
    const Player::List list = p.list(true);
    describe(p, list);
    if (p.in.oneIn(2)) {
        list.spread([&](auto... pairs) {
            zebGeneralPolygonMesh(n, loopCounts, counts, vertices, pairs...);
        });
    } else {
        zebGeneralPolygonMeshV(n, loopCounts, counts, vertices, list.n, list.tokenArray,
                               list.valueArray);
    }
}

// Calls one of the two forms with the list behind the arguments.
template <class Spread, class Arrays>
void either(Player& p, const Spread& spread, const Arrays& arrays)
{
    const Player::List list = p.list(true);
    describe(p, list);
    if (p.in.oneIn(2)) {
        list.spread(spread);
    } else {
        arrays(list.n, list.tokenArray, list.valueArray);
    }
}

void patch(Player& p)
{
    const short type = p.in.enumerator(0x700, 2);
    either(
        p, [&](auto... list) { zebPatch(type, list...); },
        [&](auto... list) { zebPatchV(type, list...); });
}

void patchMesh(Player& p)
{
    const short type = p.in.enumerator(0x700, 2), uwrap = p.in.enumerator(0xA00, 2),
                vwrap = p.in.enumerator(0xA00, 2);
    const long nu = p.in.count(), nv = p.in.count();
    either(
        p, [&](auto... list) { zebPatchMesh(type, nu, uwrap, nv, vwrap, list...); },
        [&](auto... list) { zebPatchMeshV(type, nu, uwrap, nv, vwrap, list...); });
}

void nurb(Player& p)
{
    const long nu = p.in.count(), nv = p.in.count(), uorder = p.in.count(), vorder = p.in.count();
    const float* uknot = p.floatsOrNull(8);
    const float* vknot = p.floatsOrNull(8);
    const float u0 = p.in.number(), u1 = p.in.number(), v0 = p.in.number(), v1 = p.in.number();
    if (p.in.oneIn(2)) {
        either(
            p, [&](auto... list) { zebNurb(nu, uknot, u0, u1, nv, vknot, v0, v1, list...); },
            [&](auto... list) { zebNurbV(nu, uknot, u0, u1, nv, vknot, v0, v1, list...); });
    } else {
        either(
            p,
            [&](auto... list) {
                zebNurbMesh(nu, uorder, uknot, u0, u1, nv, vorder, vknot, v0, v1, list...);
            },
            [&](auto... list) {
                zebNurbMeshV(nu, uorder, uknot, u0, u1, nv, vorder, vknot, v0, v1, list...);
            });
    }
}

void spheres(Player& p)
{
    const long n = p.in.count();
    const float* centers = p.floatsOrNull(16);
    const float* radii = p.floatsOrNull(8);
    either(
        p, [&](auto... list) { zebSpheres(n, centers, radii, list...); },
        [&](auto... list) { zebSpheresV(n, centers, radii, list...); });
}

void quadric(Player& p)
{
    const float a = p.in.number(), b = p.in.number(), c = p.in.number(), d = p.in.number(),
                e = p.in.number();
    const unsigned which = p.in.upTo(7);
    switch (which) {
        case 0:
            either(
                p, [&](auto... list) { zebSphere(a, b, c, d, list...); },
                [&](auto... list) { zebSphereV(a, b, c, d, list...); });
            break;
        case 1:
            either(
                p, [&](auto... list) { zebCone(a, b, c, d, list...); },
                [&](auto... list) { zebConeV(a, b, c, d, list...); });
            break;
        case 2:
            either(
                p, [&](auto... list) { zebCylinder(a, b, c, d, list...); },
                [&](auto... list) { zebCylinderV(a, b, c, d, list...); });
            break;
        case 3: {
            const float* from = p.floatsOrNull(3);
            const float* to = p.floatsOrNull(3);
            either(
                p, [&](auto... list) { zebHyperboloid(from, to, a, list...); },
                [&](auto... list) { zebHyperboloidV(from, to, a, list...); });
            break;
        }
        case 4:
            either(
                p, [&](auto... list) { zebParaboloid(a, b, c, d, list...); },
                [&](auto... list) { zebParaboloidV(a, b, c, d, list...); });
            break;
        case 5:
            either(
                p, [&](auto... list) { zebDisk(a, b, c, list...); },
                [&](auto... list) { zebDiskV(a, b, c, list...); });
            break;
        default:
            either(
                p, [&](auto... list) { zebTorus(a, b, c, d, e, list...); },
                [&](auto... list) { zebTorusV(a, b, c, d, e, list...); });
    }
}

}  // namespace

const std::vector<Call>& primitiveCalls()
{
    static const std::vector<Call> calls = {
        polygon,
        polygon,
        square,
        square,
        generalPolygon,
        polygonMesh,
        generalPolygonMesh,
        patch,
        patchMesh,
        nurb,
        spheres,
        quadric,
        [](Player& p) { p.procedural(); },
        [](Player& p) { p.procedural(); },
        [](Player& p) { p.objects.push_back(zebObjectBegin()); },
        [](Player&) { zebObjectEnd(); },
        [](Player& p) { zebObjectCall(p.handle(p.objects)); },
        [](Player& p) { zebObjectCall(p.handle(p.objects)); },
        [](Player& p) {
            const long n = p.in.count();
            zebMotionBegin(n, 0.0, 1.0);
        },
        [](Player& p) {
            const long n = p.in.count();
            zebMotionBeginV(n, p.floatsOrNull(4));
        },
        [](Player&) { zebMotionEnd(); },
        [](Player&) { zebMotionEnd(); },
    };
    return calls;
}

}  // namespace zebfuzz
