// Where the bound of a patch samples it.

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "geom/patch.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

constexpr std::uint32_t kBoundDraws = 2;  // what the stream of the bound is seeded with

using Place = std::pair<float, float>;

// A patch without control points, that keeps the places it is sampled at. One place stands out.
class Probe : public Patch
{
public:
    Probe() = default;

    void boundPoint(Boundw& box, float u, float v) const override
    {
        places.emplace_back(u, v);
        box.add(Pointw(u, v, peak == places.size() ? 100.0f : 0.0f, 1));
    }

    std::size_t peak = 0;  // the number of the place, from 1
    mutable std::vector<Place> places;
};

class PatchBound : public testing::Test
{
protected:
    PatchBound() { zebReset(); }
    ~PatchBound() override { zebReset(); }
    zebtest::Reports reports;
};

// The corners, eight jittered places on each edge, sixteen inside.
constexpr std::size_t kPlaces = 4 + 8 * 4 + 16;

}  // namespace

TEST_F(PatchBound, SamplesCornersAndJitteredPlacesOnEdgesAndInside)
{
    const Probe probe;
    probe.bound();
    ASSERT_EQ(probe.places.size(), kPlaces);
    for (const Place& corner : {Place(0, 0), Place(1, 0), Place(0, 1), Place(1, 1)}) {
        EXPECT_EQ(std::count(probe.places.begin(), probe.places.begin() + 4, corner), 1);
    }
    Random draws = probe.random(kBoundDraws);
    const Place* place = &probe.places[4];
    for (int i = 0; i < 8; ++i) {
        const float t = (static_cast<float>(i) + draws.unit()) * 0.125f;
        for (const Place& expected : {Place(t, 0), Place(t, 1), Place(0, t), Place(1, t)})
            EXPECT_EQ(*place++, expected);
    }
    for (int j = 0; j < 4; ++j) {
        for (int i = 0; i < 4; ++i) {
            const float u = (static_cast<float>(i) + draws.unit()) * 0.25f;
            const float v = (static_cast<float>(j) + draws.unit()) * 0.25f;
            EXPECT_EQ(*place++, Place(u, v));
        }
    }
}

TEST_F(PatchBound, HoldsEverySampleAndATenthMore)
{
    for (std::size_t k = 1; k <= kPlaces; ++k) {
        Probe probe;
        probe.peak = k;
        EXPECT_FLOAT_EQ(probe.bound().zmax, 110) << k;
    }
}
