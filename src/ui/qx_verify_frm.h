#pragma once
// How the settings in the box differ from those in the program: a mirror of the main map on
// show with the box's value, the difference and its colour in every changed cell, and a list
// of the changed one-dimensional points and settings.

#include "tables/map_tables.h"
#include "ui/child_form.h"

#include <functional>

class QLabel;
class QTableWidget;

namespace quorlen {
struct App_Context;
class User_Dialogs;
} // namespace quorlen

namespace quorlen::ui {

class QX_Verify_frm final : public Child_Form {
public:
    QX_Verify_frm(App_Context& app, std::function<User_Dialogs&()> dialogs, QWidget* parent);

    // The Verify_Check pass over `main_map` into the mirror, and Show_VerifyData into the list.
    void Show_Verify(Table_Id main_map);
    // The window takes the size of the main grid it mirrors.
    void Set_QX_Verify_Size(QSize grid);

private:
    App_Context& app_;
    std::function<User_Dialogs&()> dialogs_;
    QTableWidget* grid_;
    QTableWidget* list_;
    QLabel* title_;
    QLabel* legend_[4];
};

} // namespace quorlen::ui
