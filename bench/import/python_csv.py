"""The peer: Python's csv module on the same file, doing the same work as the C++ reader is timed for
(decode the bytes, split into rows, drop blank rows, take the header off). The delimiter is given, not
detected. Time is the process's CPU time, as for the C++ side. Usage: python_csv.py FILE RUNS. Prints MB/s of the median run and the rows read."""
import csv
import io
import statistics
import sys
import time


def main():
    path, runs = sys.argv[1], int(sys.argv[2])
    data = open(path, "rb").read()
    times = []
    rows = 0
    for _ in range(runs):
        start = time.process_time()
        text = data.decode("utf-8-sig")
        table = [row for row in csv.reader(io.StringIO(text, newline=""), delimiter=";")
                 if any(field.strip() for field in row)]
        columns = [name.strip() for name in table[0]]
        body = table[1:]
        times.append(time.process_time() - start)
        rows = len(body)
    median = statistics.median(times)
    print(f"{len(data) / 1048576 / median:.1f} MB/s {rows} rows {len(columns)} columns {median:.3f} s")


main()
