#include "defaults_file.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace zebview
{

namespace
{

// Empty if it is not known.
std::string configFolder()
{
    // Others than absolute paths are to be ignored.
    const char* const config = std::getenv("XDG_CONFIG_HOME");
    if (config && *config == '/') return config;
    const char* const home = std::getenv("HOME");
    return home && *home == '/' ? std::string(home) + "/.config" : "";
}

std::string trimmed(const std::string& text)
{
    static constexpr const char* spaces = " \t\r";
    const std::size_t begin = text.find_first_not_of(spaces);
    if (begin == std::string::npos) return "";
    return text.substr(begin, text.find_last_not_of(spaces) + 1 - begin);
}

bool isGiven(const CLI::Option* option) { return option->count() > 0; }

class DefaultsFormat : public CLI::Config
{
public:
    explicit DefaultsFormat(CLI::App& app) : fApp(app) {}

    // Hands the options over by itself, so that what is wrong with them can be told with its place.
    std::vector<CLI::ConfigItem> from_config(std::istream& lines) const override
    {
        for (const char* const other : {"--no-config", "--help", "--version"}) {
            if (fApp.count(other) > 0) return {};
        }
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            line = trimmed(line);
            if (line.empty() || line[0] == '#') continue;
            try {
                take(line);
            } catch (const CLI::ParseError& wrong) {
                const std::string file = fApp.get_config_ptr()->as<std::string>();
                throw CLI::ValidationError(file + ':' + std::to_string(number), wrong.what());
            }
        }
        return {};
    }
    std::string to_config(const CLI::App*, bool, bool, std::string) const override { return ""; }

private:
    void take(const std::string& line) const
    {
        const std::size_t equals = line.find('=');
        const std::string name = trimmed(line.substr(0, equals));
        CLI::Option* const option = fApp.get_option_no_throw("--" + name);
        if (!option || !option->get_configurable()) {
            throw CLI::ValidationError("there is no option '" + name + "' for defaults");
        }
        const bool isFlag = option->get_expected_min() == 0;
        if (isFlag != (equals == std::string::npos)) {
            throw CLI::ValidationError("the option '" + name +
                                       (isFlag ? "' stands alone" : "' has no value"));
        }
        const auto excluded = option->get_excludes();
        if (isGiven(option) || std::any_of(excluded.begin(), excluded.end(), isGiven)) return;
        option->add_result(isFlag ? "true" : trimmed(line.substr(equals + 1)));
        option->run_callback();
    }

    CLI::App& fApp;
};

}  // namespace

void addDefaultsFile(CLI::App& app)
{
    app.config_formatter(std::make_shared<DefaultsFormat>(app));
    const std::string folder = configFolder();
    app.set_config("--config", folder.empty() ? "" : folder + "/zebview/config",
                   "Defaults of other options, line by line: size = 640x480, or shadows")
        ->type_name("FILE");
    app.add_flag_function(
           "--no-config", [](std::int64_t) {}, "Without such defaults")
        ->configurable(false);
}

}  // namespace zebview
