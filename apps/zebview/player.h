// An animation of a model file, played as a clock goes.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "model.h"
#include "settings.h"

namespace zebview
{

class Player
{
public:
    // Stands still at the time that the settings ask for, or at the beginning. Throws a Failure if
    // the file has no animations.
    Player(std::string name, const Settings& settings);

    bool isPlaying() const { return fIsPlaying; }
    void play();
    // The time stays that of the latest model.
    void pause() { fIsPlaying = false; }
    // The next animation of the file, from its beginning; after the last one the first.
    void goToNext();

    // As it is now: at the end the animation begins anew. Framed for all its times.
    Model model();

    // Of the latest model.
    double seconds() const { return fSeconds; }
    std::size_t number() const { return fNumber; }
    // The animation, in words.
    std::string line() const { return fFile->animations()[fNumber]; }

private:
    using Clock = std::chrono::steady_clock;
    void open();

    const std::string fName;
    Settings fSettings;
    std::unique_ptr<ModelFile> fFile;
    std::size_t fNumber = 0;
    double fSeconds = 0;
    bool fIsPlaying = false;
    Clock::time_point fZero;  // when its beginning would have been shown
};

}  // namespace zebview
