#include "geom/object.h"

#include <gtest/gtest.h>

#include "geom/convex_polygon.h"
#include "state/quark.h"
#include "state/state.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

// A primitive of a given kind and box.
class Probe : public Primitive
{
public:
    explicit Probe(unsigned short type, const Bound& box = Bound(0.0f)) : fType(type), fBox(box) {}
    unsigned short type() const override { return fType; }
    Boundw bound() const override { return {fBox, 1, 2}; }
    std::unique_ptr<Primitive> copy(bool) const override { return std::make_unique<Probe>(*this); }

private:
    unsigned short fType;
    Bound fBox;
};

struct Pieces : PrimitiveSink {
    void add(std::unique_ptr<Primitive> piece) override { list.push_back(std::move(piece)); }
    std::vector<std::unique_ptr<Primitive>> list;
};

class ObjectTest : public testing::Test
{
protected:
    ObjectTest() { zebReset(); }
    ~ObjectTest() override { zebReset(); }

    static std::size_t size(const Object& object)
    {
        std::size_t n = 0;
        for (const auto& member : object.members()) n += member != nullptr;
        return n;
    }

    Object object;
    zebtest::Reports reports;
};

}  // namespace

TEST_F(ObjectTest, IsNeverDiced)
{
    const RenderFrame frame{Option(), Matrix()};
    Dicing dicing{frame};
    EXPECT_FALSE(object.diceable(dicing, 1000));
    EXPECT_EQ(object.type(), 15);
}

TEST_F(ObjectTest, RefusesAMemberOfAnotherKind)
{
    object.add(std::make_unique<Probe>(kConvexPolygon));
    object.add(std::make_unique<Probe>(kConvexPolygon));
    EXPECT_TRUE(reports.empty());
    object.add(std::make_unique<Probe>(kSphere));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0],
              (zebtest::Report{11, 2820, "all object primitives must be of the same type"}));
    EXPECT_EQ(size(object), 2u);
}

TEST_F(ObjectTest, TheFirstMemberDecidesTheKind)
{
    object.add(std::make_unique<Probe>(kSphere));
    object.add(std::make_unique<Probe>(kConvexPolygon));
    EXPECT_EQ(reports.size(), 1u);
    object.add(std::make_unique<Probe>(kSphere));
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_EQ(size(object), 2u);
}

TEST_F(ObjectTest, TheBoundHoldsAllMembers)
{
    object.add(std::make_unique<Probe>(kSphere, Bound(0, 1, 2, 3, 4, 5)));
    object.add(std::make_unique<Probe>(kSphere, Bound(-1, 0.5f, 2, 9, 4.5f, 4.6f)));
    const Boundw b = object.bound();
    EXPECT_EQ(static_cast<const Bound&>(b), Bound(-1, 1, 2, 9, 4, 5));
    EXPECT_EQ(b.wmin, 1);
    EXPECT_EQ(b.wmax, 2);
}

TEST_F(ObjectTest, TheBoundIsClippedByTheBoundAttributeInCameraSpace)
{
    zebTranslate(10, 0, 0);
    const float box[6] = {-9.5f, 50, -50, 50, -50, 50};
    zebBound(box);
    Object clipped;
    clipped.add(std::make_unique<Probe>(kSphere, Bound(0, 1, 2, 3, 4, 5)));
    const Boundw b = clipped.bound();
    EXPECT_EQ(b.xmin, 0.5f);
    EXPECT_EQ(b.xmax, 1);
    EXPECT_EQ(b.wmin, 1);
    EXPECT_EQ(b.wmax, 2);
}

TEST_F(ObjectTest, TheBoundOfARationalMemberIsNotClippedBeforeItIsDivided)
{
    // Homogeneous extents of a surface that lies within the box: none of the two says anything
    // about the other, and what they have in common may well be empty.
    struct Rational : Probe {
        using Probe::Probe;
        bool rational() const override { return true; }
    };
    const float box[6] = {50, 60, 50, 60, 50, 60};
    zebBound(box);
    Object undivided;
    undivided.add(std::make_unique<Rational>(kNuPatchMesh, Bound(0, 1, 2, 3, 4, 5)));
    EXPECT_EQ(static_cast<const Bound&>(undivided.bound()), Bound(0, 1, 2, 3, 4, 5));
}

TEST_F(ObjectTest, SplittingHandsOverEveryMemberInListOrder)
{
    for (float x : {1.0f, 2.0f, 3.0f}) {
        object.add(std::make_unique<Probe>(kSphere, Bound(x)));
    }
    std::vector<float> order;
    for (const auto& member : object.members()) order.push_back(member->bound().xmin);
    Pieces pieces;
    object.split(pieces);
    ASSERT_EQ(pieces.list.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(pieces.list[i]->bound().xmin, order[i]);
}

TEST_F(ObjectTest, AnInstanceTakesOneSequenceNumberForAllMembers)
{
    object.add(std::make_unique<Probe>(kSphere));
    object.add(std::make_unique<Probe>(kSphere));
    const std::uint32_t next = PrimitiveCommon::fCurSeq;
    const Object instance(object, true);
    EXPECT_EQ(PrimitiveCommon::fCurSeq, next + 1);
    EXPECT_EQ(instance.common().fSeq, next);
    EXPECT_EQ(size(instance), 2u);
    for (const auto& member : instance.members()) EXPECT_EQ(member->common().fSeq, next);
}

TEST_F(ObjectTest, AnInstanceRewritesTheRecordsOfAllEarlierOnes)
{
    object.add(std::make_unique<Probe>(kSphere));
    zebTranslate(1, 0, 0);
    const Object first(object, true);
    EXPECT_EQ(gOrigin * first.members().head()->get()->matrix(), Point(1, 0, 0));
    zebTranslate(1, 0, 0);
    const Object second(object, true);
    for (const Object* o : {const_cast<const Object*>(&object), &first, &second}) {
        EXPECT_EQ(gOrigin * o->members().head()->get()->matrix(), Point(2, 0, 0));
        EXPECT_EQ(o->members().head()->get()->common().fSeq, second.common().fSeq);
    }
}

TEST_F(ObjectTest, WithoutQuirksEachInstanceHasItsOwnRecords)
{
    object.add(std::make_unique<Probe>(kSphere));
    zebTranslate(1, 0, 0);
    const Object first(object, false);
    zebTranslate(1, 0, 0);
    const Object second(object, false);
    EXPECT_EQ(gOrigin * object.members().head()->get()->matrix(), Point(0, 0, 0));
    EXPECT_EQ(gOrigin * first.members().head()->get()->matrix(), Point(1, 0, 0));
    EXPECT_EQ(gOrigin * second.members().head()->get()->matrix(), Point(2, 0, 0));
    EXPECT_LT(first.members().head()->get()->common().fSeq,
              second.members().head()->get()->common().fSeq);
}

TEST_F(ObjectTest, APolygonsCopyIsWhole)
{
    const float points[12] = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    const unsigned short own = zebDeclare("object test: heat", 0xD02, 0xE01);
    const float heat[4] = {1, 2, 3, 4};
    const unsigned short tokens[] = {kQPoint, own};
    void* const values[] = {const_cast<float*>(points), const_cast<float*>(heat)};
    object.add(std::make_unique<ConvexPolygon>(4, 2, tokens, values));
    const Object instance(object, true);
    const auto& copy = dynamic_cast<const ConvexPolygon&>(**instance.members().head());
    EXPECT_EQ(copy.nVertices(), 4);
    EXPECT_EQ(copy.vertex(2), Point(4, 4, 0));
    ASSERT_NE(copy.args().find(own), nullptr);
    EXPECT_EQ(copy.args().find(own)->words()[3], 4);
}
