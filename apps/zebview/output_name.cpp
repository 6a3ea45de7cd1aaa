#include "output_name.h"

#include <algorithm>
#include <cctype>

#include "failure.h"

namespace zebview
{

OutputName::OutputName(const std::string& text)
{
    const auto addText = [this](char c) {
        if (fPieces.empty() || fPieces.back().kind != Piece::kText) {
            fPieces.push_back({Piece::kText, ""});
        }
        fPieces.back().text += c;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            addText(text[i]);
            continue;
        }
        // Two characters at most: 0 and a digit.
        std::size_t digits = 0, end = i + 1;
        if (text.compare(end, 1, "0") == 0 && end + 1 < text.size() &&
            std::isdigit(static_cast<unsigned char>(text[end + 1]))) {
            digits = static_cast<std::size_t>(text[end + 1] - '0');
            end += 2;
        }
        const char kind = end < text.size() ? text[end] : '\0';
        if (kind == 'd') {
            fPieces.push_back({Piece::kNumber, "", digits});
        } else if (kind == 's' && digits == 0) {
            fPieces.push_back({Piece::kModel, ""});
        } else if (kind == '%' && end == i + 1) {
            addText('%');
        } else {
            throw Failure("'" + text + "' has a % that is none of %d, %03d, %s and %%");
        }
        i = end;
    }
}

bool OutputName::hasNumber() const
{
    return std::any_of(fPieces.begin(), fPieces.end(),
                       [](const Piece& piece) { return piece.kind == Piece::kNumber; });
}

bool OutputName::hasModel() const
{
    return std::any_of(fPieces.begin(), fPieces.end(),
                       [](const Piece& piece) { return piece.kind == Piece::kModel; });
}

std::string OutputName::forView(long number, const std::string& model) const
{
    std::string name;
    for (const Piece& piece : fPieces) {
        if (piece.kind == Piece::kText) {
            name += piece.text;
        } else if (piece.kind == Piece::kModel) {
            name += model;
        } else {
            const std::string digits = std::to_string(number);
            name.append(piece.digits - std::min(piece.digits, digits.size()), '0');
            name += digits;
        }
    }
    return name;
}

}  // namespace zebview
