// Everything that is said, most of it on standard error.
#pragma once

#include <string>

namespace zebview
{

// Prints one line, "zebview: " before the text, whatever the text holds. A text that has been
// printed before is left out.
void complain(const std::string& text);

// Prints one line to standard output.
void answer(const std::string& text);

// Draws how much is done, or draws it anew; nothing unless somebody watches a terminal.
void showProgress(long percent);
// Takes the progress bar off the screen.
void clearProgress();

// Sends the library's reports to complain() from now on, infos as well if `all` is set.
void receiveReports(bool all);
// Whether the library has reported an error, which is more than a warning.
bool errorReported();

}  // namespace zebview
