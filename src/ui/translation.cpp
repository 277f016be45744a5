#include "ui/translation.h"

#include <QCoreApplication>
#include <QTranslator>

namespace quorlen::ui {

namespace {

// The translation is compiled into the program, so an installed copy and a build folder
// speak alike and nothing can go missing beside the executable.
QTranslator& Swedish() {
    static QTranslator translator;
    static const bool loaded = translator.load(QStringLiteral(":/i18n/quorlen_sv.qm"));
    (void)loaded;
    return translator;
}

} // namespace

void Use_Language(const std::string& language) {
    QTranslator& swedish = Swedish();
    QCoreApplication::removeTranslator(&swedish);
    if (language == "SWE") QCoreApplication::installTranslator(&swedish);
}

QString Tr(const char* context, const char* english) {
    return QCoreApplication::translate(context, english);
}

} // namespace quorlen::ui
