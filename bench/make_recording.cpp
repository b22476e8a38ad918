// Writes one of the benchmarks' recordings, for profilers and for the comparison with other programs.
//
//     sonorelle_bench_recording KIND SECONDS FILE.wav

#include "bench_recordings.h"

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    const double seconds = count == 4 ? std::strtod(arguments[2], nullptr) : 0.0;
    if (!(seconds > 0.0)) {
        std::fprintf(stderr, "use: %s KIND SECONDS FILE.wav, where KIND is one of", arguments[0]);
        for (const std::string& kind : sonorelle::bench::Kinds()) std::fprintf(stderr, " %s", kind.c_str());
        std::fprintf(stderr, "\n");
        return 2;
    }
    if (sonorelle::bench::WriteRecording(arguments[1], seconds, arguments[3])) return 0;
    std::fprintf(stderr, "%s: cannot write a recording of \"%s\"\n", arguments[3], arguments[1]);
    return 1;
}
