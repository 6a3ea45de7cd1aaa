#pragma once

#include <stdexcept>

namespace zebview
{

// Why there can be no picture, as one line for the user.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

}  // namespace zebview
