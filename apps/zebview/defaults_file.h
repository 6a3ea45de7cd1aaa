// What the user wants where the command line does not say it.
#pragma once

#include <CLI/CLI.hpp>

namespace zebview
{

// Adds --config and --no-config. Without them defaults are read from zebview/config in
// $XDG_CONFIG_HOME or else in ~/.config, if it is there: lines such as "size = 640x480" and
// "shadows", which are options without their dashes. What the command line gives or excludes is
// left out.
void addDefaultsFile(CLI::App& app);

}  // namespace zebview
