// Snapshot of all processes through the procps library (libproc2).
extern "C" {
#include <libproc2/pids.h>
}
#include "measure.hpp"
int main() {
    pids_item items[] = {PIDS_ID_PID, PIDS_ID_PPID,   PIDS_ID_RUID,  PIDS_ID_EUID,
                         PIDS_EXE,    PIDS_CMDLINE_V, PIDS_ENVIRON_V};
    pids_info* info = nullptr;
    if (procps_pids_new(&info, items, 7) < 0) {
        return 2;
    }
    int count = 0;
    const auto once = [&] {
        const pids_fetch* fetched = procps_pids_reap(info, PIDS_FETCH_TASKS_ONLY);
        count = fetched ? fetched->counts->total : 0;
    };
    const double begin = now();
    once();
    result("first_us", (now() - begin) * 1e6);
    result("pass_us", median_of(9, once) * 1e6);
    result("processes", count);
    procps_pids_unref(&info);
}
