#include "state/host_shader.h"

#include <mutex>
#include <utility>

#include "state/callback.h"
#include "state/error.h"
#include "state/quark.h"
#include "util/lock.h"

namespace zeb
{

std::atomic<int> HostShader::gInOrder{0};
std::atomic<bool> HostShader::gGone{false};

struct HostShader::Data {
    void* data;
    ZebFreeFunction free;
    std::unique_ptr<Data> next;
};

HostShader::HostShader(const ZebShader& shader, std::shared_ptr<const Transform> transform)
    : fShader(shader),
      fTransform(std::move(transform)),
      fData(shader.free ? new Data{shader.data, shader.free, nullptr} : nullptr)
{
    Quark::declareTexture();
    {
        const ReportLog::Scope scope(*fNoNumber);
        error(kMath, kError, "a function of the host's gave what is not a number");
    }
    {
        const ReportLog::Scope scope(*fTooFar);
        error(kRange, kError, "a displacement goes beyond the bound of zebBoundDisplacement");
    }
    if (kind() == HostShading::kInOrder) ++gInOrder;
}

namespace
{

// First come, first freed. Never destroyed: a shader may go when the process has begun to.
template <class Data>
struct Waiting {
    Lock lock;
    std::unique_ptr<Data> first;
    Data* last = nullptr;

    static Waiting& all()
    {
        static Waiting& waiting = *new Waiting;
        return waiting;
    }
};

}  // namespace

HostShader::~HostShader()
{
    if (kind() == HostShading::kInOrder) --gInOrder;
    if (!fData) return;
    auto& waiting = Waiting<Data>::all();
    const std::lock_guard lock(waiting.lock);
    Data* const last = std::exchange(waiting.last, fData.get());
    (waiting.first ? last->next : waiting.first) = std::move(fData);
    gGone = true;
}

bool HostShader::freeNext()
{
    auto& waiting = Waiting<Data>::all();
    std::unique_ptr<Data> next;
    {
        const std::lock_guard lock(waiting.lock);
        if (!waiting.first) return false;
        next = std::move(waiting.first);
        waiting.first = std::move(next->next);
        gGone = waiting.first != nullptr;
    }
    // May call in, which lets others go.
    const auto [data, free] = std::pair(next->data, next->free);
    next.reset();
    const CallbackScope scope;
    free(data);
    return true;
}

void HostShader::shade(ZebRow& row) const
{
    const CallbackScope scope(true);
    fShader.shade(fShader.data, &row);
}

}  // namespace zeb
