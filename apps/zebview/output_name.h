// The name of a picture, or of one picture for each view.
#pragma once

#include <string>
#include <vector>

namespace zebview
{

class OutputName
{
public:
    OutputName() = default;
    // %d, or %03d with as many digits as are wanted, stands for a view's number, %s for its
    // model's name, %% for a percent sign. Throws a Failure for others.
    explicit OutputName(const std::string& text);

    // Of the first view of a model: as it is, if nothing stands for anything.
    std::string text() const { return forView(0, "model"); }
    bool hasNumber() const;
    bool hasModel() const;
    bool empty() const { return fPieces.empty(); }
    std::string forView(long number, const std::string& model) const;

private:
    struct Piece {
        enum { kText, kNumber, kModel } kind;
        std::string text;
        std::size_t digits = 0;
    };
    std::vector<Piece> fPieces;
};

}  // namespace zebview
