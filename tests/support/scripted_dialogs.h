#pragma once
// User_Dialogs answered from a script, recording what the program said.

#include "core/user_dialogs.h"

#include <deque>
#include <string>
#include <vector>

namespace quorlen::test {

class Scripted_Dialogs final : public User_Dialogs {
public:
    std::vector<std::string> informed;
    std::vector<std::string> asked;
    std::deque<Answer> answers;                   // default when empty: Ok / Yes
    std::deque<std::optional<Picked_File>> files; // default when empty: cancelled
    std::vector<File_Dialog_Setup> dialogs_shown;

    std::vector<std::string> informed_titles; // of Inform_Titled, in order
    std::vector<Icon> icons;                  // of every message, in order (None when plain)
    std::vector<std::string> warned;          // of the messages with the stop sign
    void Inform(const std::string& text) override {
        icons.push_back(Icon::None);
        informed.push_back(text);
    }
    void Show_Message(Icon icon, const std::string& text) override {
        icons.push_back(icon);
        if (icon == Icon::Stop) warned.push_back(text);
        informed.push_back(text);
    }
    void Inform_Titled(const std::string& title, const std::string& text) override {
        informed_titles.push_back(title);
        Inform(text);
    }
    Answer Ask_Ok_Cancel(const std::string& text) override { return Next(text, Answer::Ok); }
    Answer Ask_Yes_No(const std::string& text) override { return Next(text, Answer::Yes); }
    std::optional<Picked_File> Pick_Open_File(const File_Dialog_Setup& setup) override { return Pick(setup); }
    std::optional<Picked_File> Pick_Save_File(const File_Dialog_Setup& setup) override { return Pick(setup); }

private:
    Answer Next(const std::string& text, Answer fallback) {
        asked.push_back(text);
        if (answers.empty()) return fallback;
        Answer a = answers.front();
        answers.pop_front();
        return a;
    }
    std::optional<Picked_File> Pick(const File_Dialog_Setup& setup) {
        dialogs_shown.push_back(setup);
        if (files.empty()) return std::nullopt;
        auto f = files.front();
        files.pop_front();
        return f;
    }
};

} // namespace quorlen::test
