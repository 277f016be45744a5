// The fault campaign of the byte-wise and binary writes: randomized scenarios against the
// simulator, each with a dropped or corrupted character, a box that falls silent, a hang-up,
// a reset into the boot loader, refused commits or a refused frame, somewhere in the write.
// Each write must end proved or aborted with its marks, and a clean box must then take the
// whole job in one more write. Prints how many ended which way; exits 1 if an edit was lost.
//
//   bench_write_faults [SCENARIOS] [FIRST_SEED]     (default 200 scenarios from seed 1000)

#include "support/settings_session.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const unsigned scenarios = argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10)) : 200;
    const unsigned first = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 1000;
    int counts[3] = {0, 0, 0};
    const auto start = std::chrono::steady_clock::now();
    for (unsigned seed = first; seed < first + scenarios; ++seed) {
        const auto sc = quorlen::test::Make_Scenario(seed);
        quorlen::test::Temp_Dir dir;
        const auto result = quorlen::test::Run_Scenario(BOXSIM_EXECUTABLE, sc, dir);
        ++counts[static_cast<int>(result.outcome)];
        if (result.outcome == quorlen::test::Outcome::Lost_Edit) {
            std::string faults;
            for (const auto& f : sc.faults)
                faults += " " + f;
            std::printf("seed %u (%s,%s): %s\n", seed, sc.binary ? "binary" : "byte-wise", faults.c_str(),
                        result.why.c_str());
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%u fault scenarios in %.0f s: %d ended verified, %d aborted cleanly, %d lost an edit\n",
                scenarios, seconds, counts[0], counts[1], counts[2]);
    return counts[2] == 0 ? 0 : 1;
}
