"""The peer: Python's csv module on the same bytes, doing the work the C++ reader is timed for and no more:
decode the bytes, split them into rows kept in memory, drop blank rows, step over the title to the header
row (the first with at least half of its fields filled) and take it off. Python is told the encoding and the
delimiter; the C++ reader detects both. Time is the process's CPU time, as for the C++ side.
Usage: python_csv.py FILE RUNS ENCODING DELIMITER. Prints MB/s of the median run, rows and columns read,
the median time and the process's peak resident memory."""
import csv
import gc
import io
import resource
import statistics
import sys
import time


def main():
    path, runs, encoding, delimiter = sys.argv[1], int(sys.argv[2]), sys.argv[3], sys.argv[4]
    data = open(path, "rb").read()
    # Millions of small lists would wake the cycle collector again and again; a reader at its best turns it off.
    gc.disable()
    times = []
    rows = columns = 0
    for _ in range(runs):
        start = time.process_time()
        text = data.decode(encoding)
        table = [row for row in csv.reader(io.StringIO(text, newline=""), delimiter=delimiter)
                 if any(field.strip() for field in row)]
        del text
        header = next(i for i, row in enumerate(table) if sum(1 for f in row if f.strip()) * 2 >= len(row))
        names = [name.strip() for name in table[header]]
        body = table[header + 1:]
        times.append(time.process_time() - start)
        rows, columns = len(body), len(names)
        del table, body
    median = statistics.median(times)
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print(f"{len(data) / 1048576 / median:.1f} MB/s {rows} rows {columns} columns {median:.3f} s {peak:.0f} MB")


main()
