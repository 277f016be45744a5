#include "files/qt/text_pages.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QStringList>
#include <QTextDocument>
#include <QTextOption>

#include <algorithm>

namespace quorlen {

namespace {

QString Text_Of(const std::string& text) {
    QString shown = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    shown.replace("\r\n", "\n");
    return shown;
}

} // namespace

void Lay_Out_Text(QTextDocument& document, const std::string& text, const QSizeF& page_points) {
    const QString shown = Text_Of(text);
    qsizetype widest = 1;
    for (const QString& line : shown.split('\n'))
        widest = std::max(widest, line.size() + line.count('\t') * 7);

    // The document lays out in pixels of 96 to the inch; the print scales them to the device.
    constexpr double Pixels_Per_Point = 96.0 / 72.0;
    constexpr double Margin_Points = 18;
    document.setDocumentMargin(Margin_Points * Pixels_Per_Point);
    document.setPageSize(page_points * Pixels_Per_Point);
    const double width_points = page_points.width() - 2 * Margin_Points;

    // Hinted advances don't grow in step with the size: each size is measured until the
    // widest line fits.
    const double width_pixels = width_points * Pixels_Per_Point;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (double size = 10; size >= 5; size -= 0.25) {
        font.setPointSizeF(size);
        if (QFontMetricsF(font).horizontalAdvance('0') * static_cast<double>(widest) <= width_pixels) break;
    }
    document.setDefaultFont(font);
    QTextOption option = document.defaultTextOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTabStopDistance(QFontMetricsF(font).horizontalAdvance(' ') * 8);
    document.setDefaultTextOption(option);
    document.setPlainText(shown);
}

void Print_Text(QPagedPaintDevice& device, const std::string& text) {
    QTextDocument document;
    Lay_Out_Text(document, text, device.pageLayout().paintRect(QPageLayout::Point).size());
    // Page by page by hand: the document's own print lays the text out again for the device
    // and breaks the lines it was sized to keep whole.
    QPainter painter(&device);
    const double scale = device.logicalDpiX() / 96.0;
    painter.scale(scale, scale);
    const QSizeF page = document.pageSize();
    for (int i = 0; i < document.pageCount(); ++i) {
        if (i > 0) device.newPage();
        painter.save();
        painter.translate(0, -i * page.height());
        document.drawContents(&painter, QRectF(QPointF(0, i * page.height()), page));
        painter.restore();
    }
}

} // namespace quorlen
