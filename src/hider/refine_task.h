// Primitives that are refined ahead of their turn, on any thread.
#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "hider/refiner.h"
#include "hider/worker.h"
#include "util/crew.h"

namespace zeb
{

// A few primitives that were filed under one bucket, one after the other. What becomes of them is
// kept until the walk comes by, and filed then: so everything is filed in the order that one thread
// would have filed it in.
//
// What only its turn can tell, as whether a surface may still be split after many splits, is left
// to it: the task is out of turn then, and its primitives are as they were. So it is after a
// report.
class RefineTask : public Task, public std::enable_shared_from_this<RefineTask>, private Filing
{
public:
    // So many at once: enough to make the task worth its while, and few enough for many threads.
    static constexpr std::size_t kMost = 32;

    enum Kind {
        kSplit,   // primitives that are split until they are pieces
        kExpand,  // one that becomes many others, and no pieces: an object or a mesh
        kCall     // one that calls the host: never run
    };
    static Kind kindOf(const Primitive& primitive);

    RefineTask(Workers& workers, const Layout& layout, BucketPlace bucket, Kind kind);
    static std::shared_ptr<RefineTask> make(Workers& workers, const Layout& layout,
                                            BucketPlace bucket, Kind kind)
    {
        return std::allocate_shared<RefineTask>(PoolAllocator<RefineTask>(), workers, layout,
                                                bucket, kind);
    }

    Kind kind() const { return fKind; }
    BucketPlace bucket() const { return fBucket; }
    bool isFull() const { return fKind != kSplit || fInputs.size() == kMost; }
    // The last is the first to be refined.
    void add(std::unique_ptr<Primitive> primitive);
    // Lets threads have it.
    void offer(Crew& crew);

    struct FiledPiece {
        std::shared_ptr<Piece> piece;
        BucketRange range;
    };
    struct Input {
        std::unique_ptr<Primitive> primitive;  // null once it is a piece
        FiledPiece piece;
    };
    template <class T>
    using Several = std::vector<T, PoolAllocator<T>>;
    using Tasks = Several<std::shared_ptr<RefineTask>>;

    Several<Input>& inputs() { return fInputs; }

    // Once it is done, in its turn: whether what was found holds. Counts it then.
    bool takeTurn(Counts& counts);
    // The walk has gone back before it.
    void leaveTurn();
    const Several<FiledPiece>& pieces() const { return fPieces; }
    // For this bucket or later ones.
    const Tasks& later() const { return fLater; }
    // Of a mesh: tasks that share its faces. Once all are done, later() has what they made.
    const Tasks& parts() const { return fParts; }
    const std::vector<std::shared_ptr<PrimitiveCommon>>& givenUp() const { return fGivenUp; }
    ReportLog& reports() { return fReports; }
    // That is expanded, or whose part is.
    const Primitive& whole() const { return *(fWhole ? *fWhole : *this).fInputs.front().primitive; }

private:
    // Thrown where only its turn can tell.
    struct OutOfTurn {
    };

    void run(int worker) override;
    void refine(Refiner& refiner);
    void expand(Refiner& refiner);
    void groupParts();
    void file(std::unique_ptr<Primitive> primitive, BucketPlace place) override;
    void file(std::shared_ptr<Piece> piece, const BucketRange& range) override;
    void giveUp(const std::shared_ptr<PrimitiveCommon>& surface) override;
    bool maySplit(Primitive& primitive) override;

    Workers& fWorkers;
    const Layout& fLayout;
    const BucketPlace fBucket;
    const Kind fKind;
    Several<Input> fInputs;
    RefineTask* fWhole = nullptr;  // that this is a part of, and that holds it
    long fPart = 0;
    struct Filed {
        std::unique_ptr<Primitive> primitive;
        BucketPlace place;
    };
    Several<Filed> fFiled;  // of a part
    std::atomic<long> fPartsLeft{0};

    Input* fInput = nullptr;  // that is being refined, itself
    Several<std::unique_ptr<Primitive>> fStack;
    bool fOutOfTurn = false;
    bool fTaken = false, fCounted = false;
    Several<FiledPiece> fPieces;
    Tasks fLater, fParts;
    std::vector<std::shared_ptr<PrimitiveCommon>> fGivenUp;
    std::vector<SplitsAhead> fSplits;
    ReportLog fReports;
    Counts fCounts;
};

}  // namespace zeb
