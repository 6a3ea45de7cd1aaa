// Start-up of the library.

#include "hider/scene.h"
#include "state/state.h"

namespace zeb
{

namespace
{

// The scene and the state live as long as the process: a host that exits in the middle of a picture
// has no callbacks left that could be called.
struct Startup {
    Startup()
    {
        gScene = new Scene;
        gState = new State;
        gState->init();
    }
};

const Startup startup;

}  // namespace
}  // namespace zeb
