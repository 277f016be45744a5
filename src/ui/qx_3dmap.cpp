#include "ui/qx_3dmap.h"

#include "app/app_context.h"
#include "core/atomic_file.h"
#include "core/proc_guard.h"

#include <QComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QOpenGLContext>
#include <QPushButton>
#include <QVBoxLayout>
#include <QtDataVisualization/Q3DCamera>
#include <QtDataVisualization/Q3DScene>
#include <QtDataVisualization/Q3DSurface>
#include <QtDataVisualization/Q3DTheme>
#include <QtDataVisualization/QSurface3DSeries>
#include <QtDataVisualization/QSurfaceDataProxy>
#include <QtDataVisualization/QValue3DAxis>

#include <algorithm>
#include <cmath>

namespace quorlen::ui {

namespace {

// The offscreen and minimal platforms may hand out a context (through GLX when a display
// happens to be there) but have no window for the surface to draw into.
bool OpenGL_Available() {
    QString platform = QGuiApplication::platformName();
    if (platform == "offscreen" || platform == "minimal") return false;
    QOpenGLContext probe;
    return probe.create();
}

// Whole numbers (engine speed, cycles) get no decimals on their axis.
const char* Label_Format(const std::vector<double>& values) {
    bool whole = std::all_of(values.begin(), values.end(), [](double v) { return v == std::floor(v); });
    return whole ? "%.0f" : "%.2f";
}

void Range(QValue3DAxis* axis, const std::vector<double>& values) {
    if (values.empty()) return;
    auto [lo, hi] = std::minmax_element(values.begin(), values.end());
    double a = *lo, b = *hi;
    if (b <= a) b = a + 1;
    axis->setRange(static_cast<float>(a), static_cast<float>(b));
}

} // namespace

QX_3Dmap::QX_3Dmap(App_Context& app, std::function<User_Dialogs&()> dialogs, QWidget* parent)
    : Child_Form(app.program.Closing, parent), app_(app), dialogs_(std::move(dialogs)) {
    setObjectName("QX_3Dmap");
    setWindowTitle("3D map");
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    Map_Select_Combo_ = new QComboBox(this);
    Map_Select_Combo_->setObjectName("Map_Select_Combo");
    Map_Select_Combo_->addItems({"Fuel map", "Ignition map", "PWM map", "Acceleration fuel"});
    top->addWidget(Map_Select_Combo_);
    top->addStretch(1);
    auto* export_button = new QPushButton("Export...", this);
    export_button->setObjectName("Export_Image");
    top->addWidget(export_button);
    layout->addLayout(top);
    connect(Map_Select_Combo_, &QComboBox::currentIndexChanged, this, [this] { Update_3D(); });
    connect(export_button, &QPushButton::clicked, this, &QX_3Dmap::Export_Image_Click);

    status_ = new QLabel(this);
    status_->setObjectName("Surface_Status_label");
    if (OpenGL_Available()) {
        graph_ = new Q3DSurface;
        series_ = new QSurface3DSeries;
        series_->setDrawMode(QSurface3DSeries::DrawSurfaceAndWireframe);
        series_->setFlatShadingEnabled(false);
        QLinearGradient gradient;
        gradient.setColorAt(0.0, QColor(60, 90, 255));
        gradient.setColorAt(0.5, QColor(250, 250, 250));
        gradient.setColorAt(1.0, QColor(255, 40, 40));
        series_->setBaseGradient(gradient);
        series_->setColorStyle(Q3DTheme::ColorStyleRangeGradient);
        series_->setItemLabelFormat("@xTitle @xLabel, @zTitle @zLabel: @yLabel");
        graph_->addSeries(series_);
        graph_->activeTheme()->setType(Q3DTheme::ThemeQt);
        graph_->activeTheme()->setLabelBackgroundEnabled(false);
        for (QValue3DAxis* axis : {graph_->axisX(), graph_->axisY(), graph_->axisZ()})
            axis->setTitleVisible(true);
        graph_->axisY()->setLabelFormat("%.1f");
        // Speed and load are of unlike units: the floor is square, not scaled by the ranges.
        graph_->setHorizontalAspectRatio(1.0);
        graph_->scene()->activeCamera()->setCameraPosition(-35, 25, 82);
        QWidget* container = QWidget::createWindowContainer(graph_, this);
        container->setObjectName("Surface_3D");
        container->setMinimumSize(480, 360);
        layout->addWidget(container, 1);
    } else {
        status_->setText("The surface needs OpenGL, which this display does not offer; the data can still "
                         "be exported as text.");
        status_->setWordWrap(true);
    }
    layout->addWidget(status_, graph_ != nullptr ? 0 : 1);
    resize(760, 600);
}

void QX_3Dmap::Show_Map(int index) {
    if (Map_Select_Combo_->currentIndex() != index)
        Map_Select_Combo_->setCurrentIndex(index); // redraws through its signal
    else
        Update_3D();
}

void QX_3Dmap::Update_3D() {
    User_Dialogs& dialogs = dialogs_();
    Tables_Context ctx = app_.Tables(dialogs);
    switch (Map_Select_Combo_->currentIndex()) {
    case 1:
        data_ = Calculate_Ign3dmap(ctx);
        break;
    case 2:
        data_ = Calculate_PWM3dmap(ctx);
        break;
    case 3:
        data_ = Calculate_Acc3dmap(ctx);
        break;
    default:
        data_ = Calculate_Fuel3dmap(ctx);
        break;
    }
    // The PWM item names what PWM 1 runs now.
    Map_Select_Combo_->setItemText(2, app_.tables.Pwm1_Boost ? "Boost map" : "PWM map");
    if (graph_ == nullptr) return;
    auto* rows = new QSurfaceDataArray;
    rows->reserve(static_cast<qsizetype>(data_.y.size()));
    for (std::size_t r = 0; r < data_.y.size(); ++r) {
        auto* row = new QSurfaceDataRow(static_cast<qsizetype>(data_.x.size()));
        for (std::size_t c = 0; c < data_.x.size(); ++c)
            (*row)[static_cast<qsizetype>(c)].setPosition(QVector3D(static_cast<float>(data_.x[c]),
                                                                    static_cast<float>(data_.y[r][c]),
                                                                    static_cast<float>(data_.z[r])));
        rows->append(row);
    }
    series_->dataProxy()->resetArray(rows);
    series_->setName(QString::fromStdString(data_.series));
    graph_->axisX()->setTitle(QString::fromStdString(data_.x_title));
    graph_->axisY()->setTitle(QString::fromStdString(data_.y_title));
    graph_->axisZ()->setTitle(QString::fromStdString(data_.z_title));
    Range(graph_->axisX(), data_.x);
    Range(graph_->axisZ(), data_.z);
    graph_->axisX()->setLabelFormat(Label_Format(data_.x));
    graph_->axisZ()->setLabelFormat(Label_Format(data_.z));
}

QImage QX_3Dmap::Surface_Image(QSize size) const {
    return graph_ == nullptr ? QImage() : graph_->renderToImage(4, size);
}

void QX_3Dmap::Export_Image_Click() {
    User_Dialogs& dialogs = dialogs_();
    Proc_Guard guard(app_.log, "Export Image Click");
    guard.Step([&] {
        File_Dialog_Setup setup;
        setup.title = "Export 3D map";
        setup.initial_dir = app_.files.CurrentDataDir;
        setup.filter = "3D-map image (*.bmp)|*.bmp|As text file (*.csv)|*.csv";
        setup.default_ext = "bmp";
        setup.initial_name = Export_Name(app_.program.Settings_File_Name);
        setup.confirm_overwrite = true;
        auto picked = dialogs.Pick_Save_File(setup);
        if (!picked) return;
        Update_3D();
        const std::string& path = picked->full_name;
        bool csv =
            path.size() >= 4 && QString::fromStdString(path.substr(path.size() - 4)).toLower() == ".csv";
        if (csv) {
            Replace_File_Atomically(path, Surface_Csv(data_));
            return;
        }
        QImage picture = Surface_Image(QSize(1024, 768));
        if (picture.isNull()) picture = grab().toImage();
        if (!picture.convertToFormat(QImage::Format_RGB888).save(QString::fromStdString(path), "BMP"))
            throw std::runtime_error("Could not save " + path);
    });
}

} // namespace quorlen::ui
