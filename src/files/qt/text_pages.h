#pragma once
// A text of the program on paper: fixed-pitch, so the summary's tables keep their columns,
// and small enough that the widest line fits the page's width.

#include <string>

class QPagedPaintDevice;
class QSizeF;
class QTextDocument;

namespace quorlen {

// `text` has CR LF line ends and 8-bit characters. The font shrinks from 10 points (to 5 at
// the least) until the widest line fits between the margins.
void Print_Text(QPagedPaintDevice& device, const std::string& text);

// The pages Print_Text lays out, of a page of `page_points` between its margins.
void Lay_Out_Text(QTextDocument& document, const std::string& text, const QSizeF& page_points);

} // namespace quorlen
