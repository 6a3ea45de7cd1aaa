// Wavefront OBJ files, statement by statement.
#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zebview
{

using Words = std::vector<std::string_view>;

Words wordsOf(std::string_view text);

// All of the word, or nothing.
template <class Number>
std::optional<Number> parsed(std::string_view word)
{
    if (word.starts_with('+')) word.remove_prefix(1);
    Number value{};
    const char* const end = word.data() + word.size();
    const auto [stopped, error] = std::from_chars(word.data(), end, value);
    if (error != std::errc() || stopped != end) return std::nullopt;
    return value;
}

// A line, or several that backslashes join.
struct Statement {
    std::size_t line = 0;
    std::string_view source;
    std::string text;  // without comments
    Words words;

    std::string_view name() const { return words.empty() ? std::string_view() : words[0]; }
};

class StatementReader
{
public:
    explicit StatementReader(std::string_view text) : fText(text) {}

    // Words last until the next one. False at the end.
    bool next(Statement& statement);

private:
    std::string_view nextLine();

    std::string_view fText;
    std::size_t fAt = 0, fLine = 1;
};

}  // namespace zebview
