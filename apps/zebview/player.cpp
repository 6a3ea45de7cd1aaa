#include "player.h"

#include <cmath>
#include <utility>

namespace zebview
{

namespace
{

// At so many times of an animation it is found out how much room the model needs.
constexpr long kMeasured = 24;

}  // namespace

Player::Player(std::string name, const Settings& settings)
    : fName(std::move(name)), fSettings(settings)
{
    if (settings.times) fSeconds = settings.times->from;
    fSettings.times.reset();
    fSettings.frames = kMeasured;
    if (fSettings.animation.empty()) fSettings.animation = '0';
    open();
}

void Player::open()
{
    fFile = std::make_unique<ModelFile>(fName, fSettings);
    fNumber = fFile->animation();
}

void Player::play()
{
    fIsPlaying = true;
    fZero = Clock::now() -
            std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(fSeconds));
}

void Player::goToNext()
{
    fSettings.animation = std::to_string((fNumber + 1) % fFile->animations().size());
    open();
    fSeconds = 0;
    if (fIsPlaying) play();
}

Model Player::model()
{
    if (fIsPlaying) {
        const double length = fFile->length();
        const double passed = std::chrono::duration<double>(Clock::now() - fZero).count();
        fSeconds = length > 0 ? std::fmod(passed, length) : 0;
    }
    return fFile->modelAt(fSeconds);
}

}  // namespace zebview
