// zebview: a model file in, a picture out.

#include <exception>
#include <new>

#include "console.h"
#include "pictures.h"
#include "settings.h"

int main(int argc, char** argv)
{
    try {
        const zebview::CommandLine commandLine = zebview::readCommandLine(argc, argv);
        if (commandLine.exitStatus) return *commandLine.exitStatus;
        return zebview::makePictures(commandLine.settings) ? 0 : 1;
    } catch (const std::bad_alloc&) {
        zebview::complain("there is not enough memory");
    } catch (const std::exception& failure) {
        zebview::complain(failure.what());
    }
    return 1;
}
