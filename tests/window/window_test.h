// What the tests of windows share: a desktop to look at, and a picture that is known otherwise.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "desktop.h"
#include "support/picture.h"
#include "support/reports.h"
#if ZEB_PNG
#include <unistd.h>

#include <cstdio>

#include "support/png_image.h"
#endif

namespace zebtest
{

class WindowTest : public testing::Test
{
protected:
    static constexpr int kWidth = 96, kHeight = 72;

    WindowTest() : desktop(openDesktop([] { zebWindowEvents(0); })) { zebReset(); }
    ~WindowTest() override
    {
        zebReset();
        closeAll();
    }

    void closeAll()
    {
        EXPECT_TRUE(until([this] {
            for (const auto window : desktop->findAll()) desktop->close(window);
            return zebWindowEvents(0) == 0;
        }));
    }

    // Lets the windows work until something holds, which may take the window system some rounds.
    static bool until(const std::function<bool()>& holds)
    {
        return eventually(holds, [] { zebWindowEvents(0); });
    }
    static bool eventually(const std::function<bool()>& holds, const std::function<void()>& pause)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!holds()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            pause();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return true;
    }

    // A lit ball in front of a coloured plane, so that all channels differ and nothing is black.
    static void beginBall(short samples = ZEB_SAMPLES_RGB, long width = kWidth,
                          long height = kHeight)
    {
        zebRasterViewport(0, width, 0, height);
        zebOutputSamples(samples);
        zebViewPerspective(45);
        zebTranslate(0, 0, 4);
        zebSceneBegin();
        const float plane[4][3] = {{-9, -9, 2}, {9, -9, 2}, {9, 9, 2}, {-9, 9, 2}};
        const float backdrop[3] = {0.2f, 0.4f, 0.7f}, skin[3] = {1, 0.5f, 0.2f};
        const float from[3] = {-1, 1, -1}, to[3] = {0, 0, 0};
        zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), to, 0);
        zebColor(backdrop);
        zebSurface(zebQuark("constant"), 0);
        zebPolygon(4, zebQuark("point"), plane, 0);
        zebColor(skin);
        zebSurface(zebQuark("diffuse"), 0);
        zebSphere(1, -1, 1, 360, 0);
    }
    static void showBall(const char* title = "ball")
    {
        zebOutputDisplay(title);
        beginBall();
        zebSceneEnd();
        zebLoadIdentity();
    }
    // The same picture, received by the host itself. Words are bytes, as far as they are shown.
    Shot ballOfTheHost(short samples = ZEB_SAMPLES_RGB, int channels = 3)
    {
        Picture picture(channels);
        picture.attach();
        beginBall(samples);
        zebSceneEnd();
        zebLoadIdentity();
        Shot shot{kWidth, kHeight, {}};
        for (long y = 0; y < kHeight; ++y) {
            for (long x = 0; x < kWidth; ++x) {
                const auto word = [&](int c) { return picture.word(x, y, c); };
                const bool rgb = samples & 1;
                shot.colors.push_back(rgb ? word(0) << 16 | word(1) << 8 | word(2)
                                          : word(0) * 0x010101);
            }
        }
        return shot;
    }

#if ZEB_PNG
    // The same picture, read from a file of a kind.
    static Shot ballInAFile(short kind)
    {
        const std::string path = testing::TempDir() + "zeb-window-" + std::to_string(getpid());
        zebOutputFile(kind, path.c_str());
        beginBall();
        zebSceneEnd();
        zebLoadIdentity();
        const PngImage image = readPng(path);
        std::remove(path.c_str());
        Shot shot{static_cast<int>(image.width), static_cast<int>(image.height), {}};
        for (long y = 0; y < image.height; ++y) {
            for (long x = 0; x < image.width; ++x) {
                const auto word = [&](int c) {
                    return image.palette.empty()
                               ? image.at(x, y, c)
                               : static_cast<std::uint32_t>(image.palette[image.at(x, y, 0)][c]);
                };
                shot.colors.push_back(word(0) << 16 | word(1) << 8 | word(2));
            }
        }
        return shot;
    }
#endif

    Desktop::Window only(const std::string& title)
    {
        Desktop::Window window = 0;
        EXPECT_TRUE(until([&] {
            const auto found = desktop->find(title);
            if (found.size() != 1) return false;
            window = found[0];
            return true;
        })) << "no window \""
            << title << '"';
        return window;
    }
    bool shows(Desktop::Window window, const Shot& picture)
    {
        return until([&] { return desktop->shoot(window) == picture; });
    }

    // Of the lower left quarter, where the icon of messages has a sheet with red lines.
    static int redness(const Shot& icon)
    {
        int most = 0;
        for (int y = icon.height / 2; y < icon.height; ++y) {
            for (int x = 0; x < icon.width / 2; ++x) {
                const auto color = static_cast<int>(icon.at(x, y));
                most = std::max(most, (color >> 16) - (color & 0xFF));
            }
        }
        return most;
    }

    std::unique_ptr<Desktop> desktop;
};

}  // namespace zebtest
