#include "ui/frm_splash.h"

#include <QFont>
#include <QLabel>
#include <QVBoxLayout>

namespace quorlen::ui {

frmSplash::frmSplash(const QString& product, const QString& version, const QString& comment)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint) {
    setObjectName("frmSplash");
    setAttribute(Qt::WA_DeleteOnClose, false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 28, 32, 28);
    auto* maker = new QLabel("VELMORA", this);
    maker->setObjectName("CompLogo");
    QFont big = maker->font();
    big.setPointSize(big.pointSize() + 10);
    big.setBold(true);
    maker->setFont(big);
    auto* name = new QLabel(product, this);
    name->setObjectName("lblProductName");
    QFont bold = name->font();
    bold.setPointSize(bold.pointSize() + 3);
    bold.setBold(true);
    name->setFont(bold);
    auto* ver = new QLabel(version, this);
    ver->setObjectName("lblVersion");
    auto* text = new QLabel(comment, this);
    text->setObjectName("lblComment");
    text->setWordWrap(true);
    layout->addWidget(maker);
    layout->addWidget(name);
    layout->addWidget(ver);
    layout->addSpacing(12);
    layout->addWidget(text);
    setStyleSheet("frmSplash, QWidget#frmSplash { background: #1f2a36; } QLabel { color: #f0f0f0; }");
    setAutoFillBackground(true);
    QPalette pal = palette();
    pal.setColor(QPalette::Window, QColor(0x1f, 0x2a, 0x36));
    setPalette(pal);
    resize(460, 220);
}

void frmSplash::keyPressEvent(QKeyEvent*) {
    hide();
}
void frmSplash::mousePressEvent(QMouseEvent*) {
    hide();
}

} // namespace quorlen::ui
