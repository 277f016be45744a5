// Lays out the user manual, written in Markdown in the repository, as A4 pages of a PDF:
//
//     make_manual MANUAL.md OUT.pdf
//
// Pictures are found beside the Markdown file (relative links) and shrunk to the width of the
// text. A picture that is missing is an error, so a manual with holes never ships.

#include <QAbstractTextDocumentLayout>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextImageFormat>
#include <QUrl>

#include <algorithm>
#include <cstdio>

namespace {

// Screenshots at the size they have on a screen of 96 dots an inch, but never wider than the
// text nor so tall that they would not fit a page with a few lines beside them.
bool Fit_Pictures(QTextDocument& doc, const QString& folder, const QSizeF& page) {
    bool all_found = true;
    for (QTextBlock block = doc.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            QTextImageFormat picture = fragment.charFormat().toImageFormat();
            if (!picture.isValid()) continue;
            const QString path = QFileInfo(folder + "/" + picture.name()).absoluteFilePath();
            QImage image(path);
            if (image.isNull()) {
                std::fprintf(stderr, "make_manual: no picture %s\n", qPrintable(path));
                all_found = false;
                continue;
            }
            doc.addResource(QTextDocument::ImageResource, QUrl(picture.name()), image);
            const qreal aspect = static_cast<qreal>(image.height()) / image.width();
            const qreal width = std::min({image.width() * 0.75, page.width(), page.height() * 0.6 / aspect});
            picture.setWidth(width);
            picture.setHeight(width * aspect);
            QTextCursor cursor(&doc);
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
            cursor.setCharFormat(picture);
        }
    }
    return all_found;
}

// Each page cut out of the laid-out document (`page` is the text's part of the printable
// area), with its number in the foot below.
void Print_Pages(QTextDocument& doc, QPdfWriter& pdf, const QSizeF& page, qreal foot) {
    QPainter painter(&pdf);
    const qreal scale = pdf.resolution() / 72.0;
    // The painter draws in points of the page; a pixel of the font is a point here.
    QFont footer = doc.defaultFont();
    footer.setPixelSize(8);
    const int pages = doc.pageCount();
    for (int i = 0; i < pages; ++i) {
        if (i > 0) pdf.newPage();
        painter.save();
        painter.scale(scale, scale);
        const QRectF shown(0, i * page.height(), page.width(), page.height());
        // Just inside the page: a picture that moved to the next one leaves no hairline here.
        painter.setClipRect(QRectF(0, 0, page.width(), page.height() - 3));
        painter.translate(0, -shown.top());
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = shown;
        doc.documentLayout()->draw(&painter, context);
        painter.restore();
        painter.save();
        painter.scale(scale, scale);
        painter.setFont(footer);
        painter.drawText(QRectF(0, page.height(), page.width(), foot), Qt::AlignHCenter | Qt::AlignBottom,
                         QStringLiteral("%1 / %2").arg(i + 1).arg(pages));
        painter.restore();
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: make_manual MANUAL.md OUT.pdf\n", stderr);
        return 2;
    }
    // Laying out text needs fonts but no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QString source = QString::fromLocal8Bit(argv[1]);
    const QString target = QString::fromLocal8Bit(argv[2]);

    QFile in(source);
    if (!in.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "make_manual: cannot read %s\n", argv[1]);
        return 1;
    }
    QTextDocument doc;
    QFont body("DejaVu Sans");
    body.setPointSizeF(10);
    doc.setDefaultFont(body);
    doc.setDocumentMargin(0);
    doc.setMarkdown(QString::fromUtf8(in.readAll()));

    QPdfWriter pdf(target);
    pdf.setTitle("RZ400/RZ800M3 Interface Software - User manual");
    pdf.setCreator("Quorlen");
    pdf.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(20, 18, 20, 18),
                                  QPageLayout::Millimeter));
    // The document is laid out in points of the page, less a foot for the page number.
    const qreal foot = 16;
    const QSizeF page = pdf.pageLayout().paintRect(QPageLayout::Point).size() - QSizeF(0, foot);
    doc.setPageSize(page);
    if (!Fit_Pictures(doc, QFileInfo(source).absolutePath(), page)) return 1;
    Print_Pages(doc, pdf, page, foot);
    return 0;
}
