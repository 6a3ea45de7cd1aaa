#include "obj_statements.h"

#include <algorithm>

namespace zebview
{

Words wordsOf(std::string_view text)
{
    constexpr const char* blanks = " \t\r\v\f";
    Words words;
    std::size_t begin = text.find_first_not_of(blanks);
    while (begin != std::string_view::npos) {
        const std::size_t end = std::min(text.find_first_of(blanks, begin), text.size());
        words.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(blanks, end);
    }
    return words;
}

bool StatementReader::next(Statement& statement)
{
    if (fAt >= fText.size()) return false;
    const std::size_t begin = fAt;
    statement.line = fLine;
    statement.text.clear();
    bool goesOn = true;
    while (goesOn && fAt < fText.size()) {
        std::string_view line = nextLine();
        line = line.substr(0, line.find('#'));
        goesOn = line.ends_with('\\');
        if (goesOn) line.remove_suffix(1);
        statement.text += line;
        if (goesOn) statement.text += ' ';
    }
    statement.source = fText.substr(begin, fAt - begin);
    statement.words = wordsOf(statement.text);
    return true;
}

std::string_view StatementReader::nextLine()
{
    const std::size_t end = std::min(fText.find('\n', fAt), fText.size());
    std::string_view line = fText.substr(fAt, end - fAt);
    if (line.ends_with('\r')) line.remove_suffix(1);
    fAt = end + 1;
    ++fLine;
    return line;
}

}  // namespace zebview
