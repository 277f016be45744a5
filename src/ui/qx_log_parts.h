#pragma once
// Small pieces the log window's pages share.

#include "ui/form_helpers.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QLineEdit>
#include <QRadioButton>

#include <initializer_list>

namespace quorlen::ui {

// Option buttons named "name(0)", "name(1)", ... in a row, their group numbering them so.
inline QButtonGroup* Options(QWidget* parent, QBoxLayout* row, const char* name,
                             std::initializer_list<const char*> captions) {
    auto* group = new QButtonGroup(parent);
    int index = 0;
    for (const char* caption : captions) {
        auto* option = new QRadioButton(caption, parent);
        option->setObjectName(QStringLiteral("%1(%2)").arg(name).arg(index));
        group->addButton(option, index++);
        row->addWidget(option);
    }
    row->addStretch();
    return group;
}

} // namespace quorlen::ui
