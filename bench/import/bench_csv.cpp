// Times reading a list file the way an import does: parseRaw, then detectHeaderRow and table.
// Usage: bench_csv FILE [RUNS]. Prints one line: MB/s of the median run, rows and columns read, the median
// time and the process's peak resident memory, the file's own bytes included, as an import holds them too.
// Time is the process's CPU time, not the wall clock: the machines that run this are shared and busy.
#include "import/CSVParser.h"

#include <QCoreApplication>
#include <QFile>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

double peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_csv FILE [RUNS]\n");
        return 2;
    }
    QFile file(QString::fromLocal8Bit(argv[1]));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot open %s\n", argv[1]);
        return 2;
    }
    const QByteArray bytes = file.readAll();
    const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    std::vector<double> seconds;
    qsizetype rows = 0;
    qsizetype columns = 0;
    for (int run = 0; run < runs; ++run) {
        const double start = cpuSeconds();
        const CSVParser::RawTable raw = CSVParser::parseRaw(bytes);
        const CSVParser::Table table = CSVParser::table(raw, CSVParser::detectHeaderRow(raw.rows));
        seconds.push_back(cpuSeconds() - start);
        rows = table.rows.size();
        columns = table.columns.size();
    }
    std::sort(seconds.begin(), seconds.end());
    const double median = seconds[seconds.size() / 2];
    const double megabytes = double(bytes.size()) / (1024.0 * 1024.0);
    std::printf("%.1f MB/s %lld rows %lld columns %.3f s %.0f MB\n", megabytes / median, static_cast<long long>(rows),
                static_cast<long long>(columns), median, peakMegabytes());
    return 0;
}
