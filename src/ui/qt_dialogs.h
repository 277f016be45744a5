#pragma once
// User_Dialogs answered by message boxes and file dialogs; or, for scripted runs of the
// whole program (start-up timing, screenshots), answered at once with the default button
// and reported on standard error.

#include "core/user_dialogs.h"

#include <QString>

class QSettings;
class QWidget;

namespace quorlen::ui {

class Qt_User_Dialogs final : public User_Dialogs {
public:
    explicit Qt_User_Dialogs(QWidget* parent, QString title) : parent_(parent), title_(std::move(title)) {}

    // When set, no dialog is shown: questions answer OK/Yes, pickers cancel.
    void Set_Unattended(bool unattended) { unattended_ = unattended; }
    bool Unattended() const { return unattended_; }
    // Where the file dialogs keep the last folder of each kind of file, from run to run.
    void Remember_Folders_In(QSettings* memory) { memory_ = memory; }

    void Inform(const std::string& text) override;
    void Show_Message(Icon icon, const std::string& text) override;
    void Inform_Titled(const std::string& title, const std::string& text) override;
    Answer Ask_Ok_Cancel(const std::string& text) override;
    Answer Ask_Yes_No(const std::string& text) override;
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup& setup) override;
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup& setup) override;

private:
    QWidget* parent_;
    QString title_;
    bool unattended_ = false;
    QSettings* memory_ = nullptr;
};

// The folder a file dialog opens in. Settings and logs: the folder the program names (it keeps
// them in its ini file). Other kinds (exports): the last folder a file of that kind was picked
// in (kept in `memory`), else the named one, else the home folder.
QString Dialog_Start_Folder(const File_Dialog_Setup& setup, const QSettings* memory);
// Keeps the folder of a picked file for the next dialog of its kind.
void Remember_Dialog_Folder(const File_Dialog_Setup& setup, const QString& picked, QSettings* memory);

// "Box setting file *.qxs|*.qxs" as a Qt name filter list.
QString Qt_Filter_From(const std::string& filter);

// Texts of the files and the settings are 8-bit in the old code page; the screen is Unicode.
QString From_8bit(const std::string& text);
std::string To_8bit(const QString& text);

} // namespace quorlen::ui
