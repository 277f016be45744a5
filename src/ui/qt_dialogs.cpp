#include "ui/qt_dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QSettings>
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

namespace {

// The kind of file a dialog is for: the extension of its first pattern ("qxs", "csv").
QString File_Kind(const File_Dialog_Setup& setup) {
    const QStringList parts = QString::fromStdString(setup.filter).split('|');
    QString pattern = parts.size() > 1 ? parts[1].trimmed() : QString();
    const qsizetype dot = pattern.lastIndexOf('.');
    pattern = dot < 0 ? QString() : pattern.mid(dot + 1);
    return pattern.isEmpty() || pattern == "*" ? QStringLiteral("any") : pattern;
}

// Settings and log folders are the program's own business, kept in its ini file as they have
// always been; for them the folder the program names comes first.
bool Program_Keeps_Folder(const QString& kind) {
    return kind == "qxs" || kind == "qxl" || kind == "qxo";
}

} // namespace

QString Dialog_Start_Folder(const File_Dialog_Setup& setup, const QSettings* memory) {
    const QString kind = File_Kind(setup);
    const QString named = QString::fromStdString(setup.initial_dir);
    const QString kept = memory != nullptr ? memory->value("Folders/" + kind).toString() : QString();
    const bool named_ok = !named.isEmpty() && QFileInfo(named).isDir();
    const bool kept_ok = !kept.isEmpty() && QFileInfo(kept).isDir();
    if (named_ok && (Program_Keeps_Folder(kind) || !kept_ok)) return named;
    if (kept_ok) return kept;
    return QDir::homePath();
}

void Remember_Dialog_Folder(const File_Dialog_Setup& setup, const QString& picked, QSettings* memory) {
    if (memory == nullptr || picked.isEmpty()) return;
    memory->setValue("Folders/" + File_Kind(setup), QFileInfo(picked).absolutePath());
}

std::optional<Picked_File> Qt_User_Dialogs::Pick_Open_File(const File_Dialog_Setup& setup) {
    if (unattended_) return std::nullopt;
    const QString name =
        QFileDialog::getOpenFileName(parent_, QString::fromStdString(setup.title),
                                     Dialog_Start_Folder(setup, memory_), Qt_Filter_From(setup.filter));
    Remember_Dialog_Folder(setup, name, memory_);
    return Picked(name);
}

std::optional<Picked_File> Qt_User_Dialogs::Pick_Save_File(const File_Dialog_Setup& setup) {
    if (unattended_) return std::nullopt;
    QFileDialog dialog(parent_, QString::fromStdString(setup.title), Dialog_Start_Folder(setup, memory_),
                       Qt_Filter_From(setup.filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QString::fromStdString(setup.default_ext));
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !setup.confirm_overwrite);
    dialog.selectFile(QString::fromStdString(setup.initial_name));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    Remember_Dialog_Folder(setup, dialog.selectedFiles().constFirst(), memory_);
    return Picked(dialog.selectedFiles().constFirst());
}

} // namespace quorlen::ui
