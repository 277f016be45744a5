#include "ui/qt_dialogs.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QStringList>

#include <cstdio>

namespace quorlen::ui {

QString From_8bit(const std::string& text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

std::string To_8bit(const QString& text) {
    QByteArray bytes = text.toLatin1();
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

QString Qt_Filter_From(const std::string& filter) {
    QStringList parts = QString::fromStdString(filter).split('|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString label = parts[i].trimmed();
        QString pattern = parts[i + 1].trimmed();
        // The label already names its pattern; Qt wants it in parentheses.
        qsizetype star = label.indexOf('*');
        if (star > 0) label = label.left(star).trimmed();
        filters << QStringLiteral("%1 (%2)").arg(label, pattern);
    }
    return filters.join(QStringLiteral(";;"));
}

namespace {
void Report(const char* kind, const std::string& text) {
    std::fprintf(stderr, "[%s] %s\n", kind, text.c_str());
}

std::optional<Picked_File> Picked(const QString& name) {
    if (name.isEmpty()) return std::nullopt;
    QFileInfo info(name);
    return Picked_File{name.toStdString(), info.fileName().toStdString()};
}

QMessageBox::Icon Qt_Icon(Icon icon) {
    switch (icon) {
    case Icon::Stop:
        return QMessageBox::Critical;
    case Icon::Question:
        return QMessageBox::Question;
    case Icon::Information:
        return QMessageBox::Information;
    case Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

void Show_Box(QWidget* parent, Icon icon, const QString& title, const QString& text) {
    QMessageBox box(Qt_Icon(icon), title, text, QMessageBox::Ok, parent);
    box.exec();
}
} // namespace

void Qt_User_Dialogs::Inform(const std::string& text) {
    Show_Message(Icon::None, text);
}

void Qt_User_Dialogs::Show_Message(Icon icon, const std::string& text) {
    if (unattended_) return Report("inform", text);
    Show_Box(parent_, icon, title_, From_8bit(text));
}

void Qt_User_Dialogs::Inform_Titled(const std::string& title, const std::string& text) {
    if (unattended_) return Report("inform", text);
    Show_Box(parent_, Icon::None, From_8bit(title), From_8bit(text));
}

Answer Qt_User_Dialogs::Ask_Ok_Cancel(const std::string& text) {
    if (unattended_) {
        Report("ask", text);
        return Answer::Ok;
    }
    auto button = QMessageBox::question(parent_, title_, From_8bit(text),
                                        QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok);
    return button == QMessageBox::Ok ? Answer::Ok : Answer::Cancel;
}

Answer Qt_User_Dialogs::Ask_Yes_No(const std::string& text) {
    if (unattended_) {
        Report("ask", text);
        return Answer::Yes;
    }
    auto button = QMessageBox::question(parent_, title_, From_8bit(text), QMessageBox::Yes | QMessageBox::No,
                                        QMessageBox::Yes);
    return button == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

std::optional<Picked_File> Qt_User_Dialogs::Pick_Open_File(const File_Dialog_Setup& setup) {
    if (unattended_) return std::nullopt;
    return Picked(QFileDialog::getOpenFileName(parent_, QString::fromStdString(setup.title),
                                               QString::fromStdString(setup.initial_dir),
                                               Qt_Filter_From(setup.filter)));
}

std::optional<Picked_File> Qt_User_Dialogs::Pick_Save_File(const File_Dialog_Setup& setup) {
    if (unattended_) return std::nullopt;
    QFileDialog dialog(parent_, QString::fromStdString(setup.title),
                       QString::fromStdString(setup.initial_dir), Qt_Filter_From(setup.filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QString::fromStdString(setup.default_ext));
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !setup.confirm_overwrite);
    dialog.selectFile(QString::fromStdString(setup.initial_name));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return Picked(dialog.selectedFiles().constFirst());
}

} // namespace quorlen::ui
