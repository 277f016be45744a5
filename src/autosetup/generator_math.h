#pragma once
// The arithmetic the generators share: the form's numbers, divisions that fault where the
// original's did, and the conversion to a 16-bit whole number.

#include "core/run_error.h"

#include <string>
#include <string_view>

namespace quorlen {

// A generator's fault, with a word on which input brought it about so the tuner can mend it.
class Generator_Fault : public Run_Error {
public:
    Generator_Fault(const Run_Error& error, std::string hint) : Run_Error(error), hint_(std::move(hint)) {}
    const std::string& hint() const { return hint_; }

private:
    std::string hint_;
};

// A number from a box: commas read as points, the leading number, 0 without one.
double Box_Number(std::string_view text);
// Turns every comma of a box into a point, as the form does before it reads some boxes.
void Comma_To_Point(std::string& text);

// a / b. Zero divided by zero is an Overflow and anything else by zero a Division by zero,
// each a Generator_Fault carrying `hint`.
double Divide(double a, double b, const char* hint);

// The nearest whole number, a tie to the even one, as a 16-bit integer; Overflow outside.
int To_Integer16(double value);
// The same to a 32-bit integer.
int To_Integer32(double value);

} // namespace quorlen
