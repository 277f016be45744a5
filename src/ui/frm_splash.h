#pragma once

#include <QWidget>

class QLabel;

namespace quorlen::ui {

// Shown while the tables are built; any key or click closes it.
class frmSplash final : public QWidget {
public:
    frmSplash(const QString& product, const QString& version, const QString& comment);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
};

} // namespace quorlen::ui
