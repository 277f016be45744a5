#pragma once
// Small pieces the forms are built with.

#include "ui/qt_dialogs.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QThread>

#include <string>

namespace quorlen::ui {

// A text of the program (8-bit, CR LF line ends) as a text box shows it.
inline QString Shown_Text(const std::string& text) {
    QString s = From_8bit(text);
    s.replace("\r\n", "\n");
    return s;
}

// A line edit named as the control it stands for, at most `width` pixels wide.
inline QLineEdit* Named_Field(QWidget* parent, const char* name, int width = 70) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setMaximumWidth(width);
    return edit;
}

// Dummy_Wait: serves the event loop for `ms` while a procedure waits on the port.
inline void Serve_Events(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
}

} // namespace quorlen::ui
