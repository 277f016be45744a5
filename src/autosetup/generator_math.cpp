#include "autosetup/generator_math.h"

#include "image/scaling.h"
#include "tables/cell_entry.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace quorlen {

double Box_Number(std::string_view text) {
    return Text_To_Double(text);
}

void Comma_To_Point(std::string& text) {
    for (char& c : text)
        if (c == ',') c = '.';
}

double Divide(double a, double b, const char* hint) {
    if (b == 0) throw Generator_Fault(a == 0 ? errors::Overflow() : Run_Error(11, "Division by zero"), hint);
    return a / b;
}

namespace {

template <class T>
T Whole(double value) {
    const double whole = Round_Even_Whole(value);
    if (!std::isfinite(whole) || whole < static_cast<double>(std::numeric_limits<T>::min()) ||
        whole > static_cast<double>(std::numeric_limits<T>::max()))
        throw errors::Overflow();
    return static_cast<T>(whole);
}

} // namespace

int To_Integer16(double value) {
    return Whole<std::int16_t>(value);
}

int To_Integer32(double value) {
    return Whole<std::int32_t>(value);
}

} // namespace quorlen
