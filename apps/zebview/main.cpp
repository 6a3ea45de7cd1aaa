// zebview: a model file in, a picture out, or a window that turns the model.

#include <exception>
#include <new>

#include "console.h"
#include "pictures.h"
#include "settings.h"
#include "viewer.h"

int main(int argc, char** argv)
{
    try {
        const zebview::CommandLine commandLine = zebview::readCommandLine(argc, argv);
        if (commandLine.exitStatus) return *commandLine.exitStatus;
        const zebview::Settings& settings = commandLine.settings;
        const bool inWindow = settings.toWindow() && !settings.lists();
        return (inWindow ? zebview::showModels : zebview::makePictures)(settings) ? 0 : 1;
    } catch (const std::bad_alloc&) {
        zebview::complain("there is not enough memory");
    } catch (const std::exception& failure) {
        zebview::complain(failure.what());
    }
    return 1;
}
