#!/usr/bin/env bash
# Makes the user guide's pictures again from the GUI tests.
#
#   scripts/guida-immagini.sh [build-dir [destination]]
#
# docs/guida/immagini/origine.txt names, for each picture, the ctest test, the test function (with its data
# row, as QtTest takes it) and the screenshot that the function saves with TestSupport::salvaSchermata. Each
# test executable runs once, with only the functions that make pictures, exactly as ctest runs it (same
# command, wrapper and environment, taken from `ctest --show-only=json-v1`), its screenshots going to a
# temporary folder, with an Italian locale as the readers have; then each screenshot is copied to its name in
# the destination (docs/guida/immagini unless given). A failing test, or a screenshot that doesn't appear, fails
# the script: a picture must show what a passing test checked.
set -euo pipefail
radice=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$radice/build}" && pwd)
destinazione=${2:-$radice/docs/guida/immagini}
exec /usr/bin/python3 - "$radice" "$radice/docs/guida/immagini/origine.txt" "$build" "$destinazione" <<'PY'
import json
import os
import shutil
import subprocess
import sys
import tempfile

radice, origine, build, destinazione = sys.argv[1:5]
# The guide's checker reads the pictures' origin the same way.
sys.dont_write_bytecode = True  # no cache files in the source tree
sys.path.insert(0, os.path.join(radice, "tests", "guida"))
from controlla_guida import leggi_origine  # noqa: E402


def test_di_ctest(build):
    uscita = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build, check=True, capture_output=True, text=True)
    tests = {}
    for test in json.loads(uscita.stdout)["tests"]:
        proprieta = {p["name"]: p["value"] for p in test.get("properties", [])}
        tests[test["name"]] = (test["command"], proprieta)
    return tests


voci, errori_origine = leggi_origine(origine)
if errori_origine:
    sys.exit("\n".join(errori_origine))
tests = test_di_ctest(build)
errori = []
with tempfile.TemporaryDirectory(prefix="guida-immagini-") as lavoro:
    funzioni = {}
    for _, test, funzione, _ in voci:
        funzioni.setdefault(test, [])
        if funzione not in funzioni[test]:
            funzioni[test].append(funzione)
    for test, elenco in funzioni.items():
        if test not in tests:
            errori.append(f"{test}: no such ctest test in {build}")
            continue
        comando, proprieta = tests[test]
        ambiente = dict(os.environ)
        for voce in proprieta.get("ENVIRONMENT", []):
            nome, _, valore = voce.partition("=")
            ambiente[nome] = valore
        cartella = os.path.join(lavoro, test)
        os.makedirs(cartella)
        ambiente["BREZZARIO_TEST_ARTIFACTS"] = cartella
        # Dates, times and numbers as the guide's readers see them on an Italian desktop.
        ambiente["LANG"] = ambiente["LC_ALL"] = "it_IT.UTF-8"
        print(f"{test}: {' '.join(elenco)}", flush=True)
        try:
            esito = subprocess.run(comando + elenco, cwd=proprieta.get("WORKING_DIRECTORY", build), env=ambiente,
                                   stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace",
                                   timeout=float(proprieta.get("TIMEOUT", 600)))
        except subprocess.TimeoutExpired:
            errori.append(f"{test}: timed out")
            continue
        if esito.returncode != 0:
            coda = "\n".join((esito.stdout + esito.stderr).splitlines()[-40:])
            errori.append(f"{test} failed ({esito.returncode}):\n{coda}")
    if not errori:
        os.makedirs(destinazione, exist_ok=True)
        for immagine, test, funzione, schermata in voci:
            sorgente = os.path.join(lavoro, test, schermata + ".png")
            if os.path.isfile(sorgente):
                shutil.copyfile(sorgente, os.path.join(destinazione, immagine))
            else:
                errori.append(f"{immagine}: {test} {funzione} saved no screenshot '{schermata}'")

if errori:
    print("\n".join(errori), file=sys.stderr)
    sys.exit(1)
print(f"{len(voci)} pictures in {destinazione}")
PY
