// The settings form bound to the shipped data, offscreen, at 1280 x 800: a slider moved by
// the user until the form has repainted (the image written, every view of the program
// following, the page painted), and the program's Update_All while the form is shown. Both
// targets are under 5 ms.

#include "support/main_window_run.h"
#include "support/scripted_dialogs.h"
#include "ui/qx_settings.h"

#include <QAction>
#include <QApplication>
#include <QScrollBar>
#include <QTabWidget>

#include <benchmark/benchmark.h>

#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

struct Form_On_Show {
    quorlen::test::Temp_Dir dir;
    quorlen::test::Scripted_Dialogs dialogs;
    std::unique_ptr<quorlen::ui::BoostProgMain> window;
    quorlen::ui::QX_settings* form = nullptr;

    explicit Form_On_Show(int tab) {
        quorlen::test::Copy_Shipped_Data(dir);
        window = quorlen::test::Start_Main_Window(dir, dialogs, quorlen::test::Unattended());
        window->findChild<QAction*>("mnu_Settings")->trigger();
        form = window->findChild<quorlen::ui::QX_settings*>("QX_settings");
        form->resize(1280, 800);
        form->Tabs()->setCurrentIndex(tab);
        QApplication::processEvents();
    }
    ~Form_On_Show() { window->File_exit_Click(); }
};

double Seconds_Since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The idle speed (Idle settings) moved a step up and back, as the thumb is let go.
void BM_Slider_Move_To_Repainted_Form(benchmark::State& state) {
    Form_On_Show on_show(5);
    auto* scroll = on_show.form->findChild<QScrollBar*>("scroll_7");
    const int base = scroll->value();
    int i = 0;
    for (auto _ : state) {
        auto start = Clock::now();
        scroll->setValue(base + (i++ % 2 == 0 ? 1 : 0));
        on_show.form->repaint();
        state.SetIterationTime(Seconds_Since(start));
    }
}
BENCHMARK(BM_Slider_Move_To_Repainted_Form)->UseManualTime()->Unit(benchmark::kMillisecond);

// The program-wide refresh that every change of the image runs, with the form shown on the
// digital outputs (the most controls and four charts).
void BM_Update_All_With_Form_Shown(benchmark::State& state) {
    Form_On_Show on_show(15);
    for (auto _ : state) {
        auto start = Clock::now();
        on_show.window->Update_All();
        state.SetIterationTime(Seconds_Since(start));
    }
}
BENCHMARK(BM_Update_All_With_Form_Shown)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
