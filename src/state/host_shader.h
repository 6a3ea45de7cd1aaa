// Functions of the host's that shade.
#pragma once

#include <atomic>
#include <memory>

#include "math/spaces.h"
#include "math/transform.h"
#include "state/report_log.h"
#include "zebcore/zebcore.h"

namespace zeb
{

// How the functions of a surface, its atmosphere and its lights may be called. Of several, the
// strictest counts.
enum class HostShading { kNone, kAnywhere, kInOrder };

// One of them, with its data.
class HostShader
{
public:
    // The call that makes it is named in reports. The transformation is from its space to camera
    // space.
    HostShader(const ZebShader& shader, std::shared_ptr<const Transform> transform);
    // On any thread; the data is freed later.
    ~HostShader();
    HostShader(const HostShader&) = delete;
    HostShader& operator=(const HostShader&) = delete;

    bool setsOpacity() const { return fShader.flags & ZEB_SHADE_OPACITY; }
    bool isAmbient() const { return fShader.flags & ZEB_SHADE_AMBIENT; }
    HostShading kind() const
    {
        return fShader.flags & ZEB_SHADE_ANYWHERE ? HostShading::kAnywhere : HostShading::kInOrder;
    }

    // The way to camera space from the one it was made in, or from those that were marked then.
    const Matrix& toCamera() const { return fTransform->matrix(); }
    const MarkedSpaces& spaces() const { return *fSpaces; }

    void shade(ZebRow& row) const;
    // Tells, once, that what it gave was no number.
    void tellNoNumber() const { tellInTurn(fNoNumber); }
    // Tells, once, that it has moved points too far.
    void tellTooFar() const { tellInTurn(fTooFar); }

    // Whether there is one that has to be called in order: then the host can tell in which order
    // things happen.
    static bool anyInOrder() { return gInOrder.load(std::memory_order_relaxed) > 0; }
    // On the caller's thread, when a call ends: frees the data of those that are gone.
    static void freeGone()
    {
        while (gGone.load(std::memory_order_relaxed) && freeNext()) {
        }
    }

private:
    // What waits to be freed.
    struct Data;
    static bool freeNext();

    static std::atomic<int> gInOrder;
    static std::atomic<bool> gGone;

    const ZebShader fShader;
    const std::shared_ptr<const Transform> fTransform;
    const std::shared_ptr<const MarkedSpaces> fSpaces = MarkedSpaces::current();
    std::unique_ptr<Data> fData;  // null if nothing has to be freed
    std::shared_ptr<ReportLog> fNoNumber = std::make_shared<ReportLog>();
    std::shared_ptr<ReportLog> fTooFar = std::make_shared<ReportLog>();
};

}  // namespace zeb
