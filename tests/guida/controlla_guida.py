"""Checks the user guide in docs/guida: its pages, links and pictures, and that the script makes every picture.

    controlla_guida.py GUIDA [--build BUILD --script SCRIPT]

Without --build only the pages are checked. With it, the script that makes the pictures from the GUI tests
runs into a temporary folder (the committed pictures stay as they are), and each picture must come out of it.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile

IMMAGINI = "immagini"
ORIGINE = "origine.txt"
CAPITOLO = re.compile(r"^\d\d-[a-z0-9]+(-[a-z0-9]+)*\.md$")
# An inline image or link: the text in brackets, then the destination, with an optional title.
COLLEGAMENTO = re.compile(r'(!?)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(\s*<?([^)\s>]*)>?(?:\s+"[^"]*")?\s*\)')
RECINTO = re.compile(r"^\s{0,3}(```|~~~)")
CODICE_IN_LINEA = re.compile(r"`+[^`]*`+")
ESTERNO = re.compile(r"^[a-zA-Z][a-zA-Z0-9+.-]*:")


def righe_di_testo(testo):
    """The lines of a page outside fenced code, with inline code blanked, so that examples aren't read as links."""
    dentro = False
    for numero, riga in enumerate(testo.splitlines(), 1):
        if RECINTO.match(riga):
            dentro = not dentro
            continue
        if not dentro:
            yield numero, CODICE_IN_LINEA.sub(lambda m: " " * len(m.group(0)), riga)


def leggi_origine(percorso):
    """The lines 'picture | test | function | screenshot' of the pictures' origin, with the errors found."""
    voci, errori = [], []
    if not os.path.isfile(percorso):
        return voci, [f"{ORIGINE} is missing"]
    with open(percorso, encoding="utf-8") as file:
        for numero, riga in enumerate(file, 1):
            riga = riga.split("#", 1)[0].strip()
            if not riga:
                continue
            campi = [campo.strip() for campo in riga.split("|")]
            if len(campi) != 4 or not all(campi):
                errori.append(f"{ORIGINE}:{numero}: expected 'picture | test | function | screenshot'")
            else:
                voci.append(campi)
    return voci, errori


def controlla_pagine(guida):
    """Every error of the pages: links, pictures, the table of contents and the pictures' origin."""
    errori = []
    cartella_immagini = os.path.join(guida, IMMAGINI)
    pagine = sorted(nome for nome in os.listdir(guida) if nome.endswith(".md"))
    if "index.md" not in pagine:
        errori.append("index.md is missing")
    for nome in pagine:
        if nome != "index.md" and not CAPITOLO.match(nome):
            errori.append(f"{nome}: a chapter is named with a two-digit order, e.g. 01-primo-avvio.md")
    testi = {}
    for nome in pagine:
        with open(os.path.join(guida, nome), encoding="utf-8") as file:
            testi[nome] = file.read()

    usate = set()
    dall_indice = set()
    for nome, testo in testi.items():
        for numero, riga in righe_di_testo(testo):
            dove = f"{nome}:{numero}"
            for trovato in COLLEGAMENTO.finditer(riga):
                immagine, etichetta, destinazione = trovato.group(1) == "!", trovato.group(2), trovato.group(3)
                if ESTERNO.match(destinazione):
                    continue
                percorso, _, frammento = destinazione.partition("#")
                if immagine:
                    if not etichetta.strip():
                        errori.append(f"{dove}: picture {destinazione} has no alternative text")
                    if os.path.dirname(percorso) != IMMAGINI or not percorso.endswith(".png"):
                        errori.append(f"{dove}: picture {destinazione} is not a PNG in {IMMAGINI}/")
                        continue
                    usate.add(os.path.basename(percorso))
                    if not os.path.isfile(os.path.join(guida, percorso)):
                        errori.append(f"{dove}: picture {destinazione} does not exist")
                    continue
                # The pages become HTML with no identifiers on their headings: a link can only name a page.
                if frammento:
                    errori.append(f"{dove}: link {destinazione} names a place in a page; link the page itself")
                    continue
                if os.path.dirname(percorso) or not percorso.endswith(".md"):
                    errori.append(f"{dove}: link {destinazione} is not a page of the guide")
                    continue
                if percorso not in testi:
                    errori.append(f"{dove}: link {destinazione} points to no page")
                    continue
                if nome == "index.md":
                    dall_indice.add(percorso)
    for nome in pagine:
        if nome != "index.md" and "index.md" in testi and nome not in dall_indice:
            errori.append(f"{nome}: not in the table of contents of index.md")

    presenti = set()
    if os.path.isdir(cartella_immagini):
        for nome in sorted(os.listdir(cartella_immagini)):
            if nome == ORIGINE:
                continue
            if not nome.endswith(".png"):
                errori.append(f"{IMMAGINI}/{nome}: only PNG pictures and {ORIGINE} belong here")
                continue
            presenti.add(nome)
            if nome not in usate:
                errori.append(f"{IMMAGINI}/{nome}: no page shows this picture")

    voci, errori_origine = leggi_origine(os.path.join(cartella_immagini, ORIGINE))
    errori.extend(errori_origine)
    conteggio = {}
    for voce in voci:
        conteggio[voce[0]] = conteggio.get(voce[0], 0) + 1
    for immagine, volte in sorted(conteggio.items()):
        if volte > 1:
            errori.append(f"{ORIGINE}: {immagine} is made {volte} times")
        if immagine not in presenti:
            errori.append(f"{ORIGINE}: {immagine} is not in {IMMAGINI}/")
    for immagine in sorted((presenti | usate) - set(conteggio)):
        errori.append(f"{IMMAGINI}/{immagine}: no GUI test makes it ({ORIGINE} has no line for it)")
    return errori


def png_valido(percorso):
    with open(percorso, "rb") as file:
        testa = file.read(24)
    if len(testa) < 24 or testa[:8] != b"\x89PNG\r\n\x1a\n":
        return False
    larghezza = int.from_bytes(testa[16:20], "big")
    altezza = int.from_bytes(testa[20:24], "big")
    return larghezza >= 50 and altezza >= 50


def controlla_script(guida, build, script):
    """Runs the picture script into a temporary folder; every picture of the origin must come out as a PNG."""
    voci, errori = leggi_origine(os.path.join(guida, IMMAGINI, ORIGINE))
    if errori:
        return errori
    with tempfile.TemporaryDirectory(prefix="guida-prova-") as cartella:
        esito = subprocess.run([script, build, cartella], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                               errors="replace")
        sys.stdout.write(esito.stdout)
        if esito.returncode != 0:
            return [f"{os.path.basename(script)} failed ({esito.returncode}):\n{esito.stderr}"]
        for immagine, test, funzione, schermata in voci:
            fatta = os.path.join(cartella, immagine)
            if not os.path.isfile(fatta):
                errori.append(f"{immagine}: not made by {test} {funzione} ({schermata})")
            elif not png_valido(fatta):
                errori.append(f"{immagine}: what {test} {funzione} made is not a picture")
    return errori


def main():
    argomenti = argparse.ArgumentParser()
    argomenti.add_argument("guida")
    argomenti.add_argument("--build")
    argomenti.add_argument("--script")
    opzioni = argomenti.parse_args()
    errori = controlla_pagine(opzioni.guida)
    if opzioni.build and not errori:
        errori = controlla_script(opzioni.guida, opzioni.build, opzioni.script)
    for errore in errori:
        print(errore)
    if errori:
        return 1
    print("guide: every link and picture is in place, and the GUI tests make every picture")
    return 0


if __name__ == "__main__":
    sys.exit(main())
