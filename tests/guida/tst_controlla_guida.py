"""The guide's checker against small guides with one fault each: each fault must be told, a sound guide must not."""

import os
import struct
import sys
import tempfile
import unittest
import zlib

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import controlla_guida  # noqa: E402


def png(larghezza=80, altezza=60):
    riga = b"\x00" + b"\xff\xff\xff" * larghezza
    dati = zlib.compress(riga * altezza)

    def pezzo(tipo, contenuto):
        return (struct.pack(">I", len(contenuto)) + tipo + contenuto +
                struct.pack(">I", zlib.crc32(tipo + contenuto) & 0xFFFFFFFF))

    return (b"\x89PNG\r\n\x1a\n" + pezzo(b"IHDR", struct.pack(">IIBBBBB", larghezza, altezza, 8, 2, 0, 0, 0)) +
            pezzo(b"IDAT", dati) + pezzo(b"IEND", b""))


INDICE = "# Guida\n\n1. [Primo avvio](01-primo-avvio.md)\n2. [Le liste](02-liste.md)\n"
PRIMO = ("# Primo avvio\n\n## La finestra\n\n![La finestra vuota](immagini/finestra.png)\n\n"
         "Poi leggi [le liste](02-liste.md) e torna all'[indice](index.md).\n"
         "Vedi anche il sito [esterno](https://www.nembrosa.example/guida#inizio).\n")
LISTE = "# Le liste\n\n## Importare un file\n\n![Il foglio](immagini/foglio.png)\n"
ORIGINE = ("# immagine | test | funzione | schermata\n"
           "finestra.png | test_journey | viaggio | viaggio-0-avvio\n"
           "foglio.png | test_lists | importaFile:title row | lists-sheet-title-row\n")


def guida_sana():
    return {"index.md": INDICE, "01-primo-avvio.md": PRIMO, "02-liste.md": LISTE, "immagini/origine.txt": ORIGINE,
            "immagini/finestra.png": png(), "immagini/foglio.png": png()}


def scrivi(cartella, file):
    for nome, contenuto in file.items():
        percorso = os.path.join(cartella, nome)
        os.makedirs(os.path.dirname(percorso), exist_ok=True)
        with open(percorso, "wb") as uscita:
            uscita.write(contenuto.encode() if isinstance(contenuto, str) else contenuto)


def con(**modifiche):
    file = guida_sana()
    for nome, contenuto in modifiche.items():
        nome = nome.replace("__", "/").replace("_md", ".md").replace("_png", ".png").replace("_txt", ".txt")
        if contenuto is None:
            file.pop(nome)
        else:
            file[nome] = contenuto
    return file


class ControllaPagine(unittest.TestCase):
    CASI = [
        ("sound guide", guida_sana(), None),
        ("picture missing", con(immagini__foglio_png=None), "picture immagini/foglio.png does not exist"),
        ("picture no page shows", con(immagini__vecchia_png=png()), "immagini/vecchia.png: no page shows"),
        ("picture outside the folder", con(**{"02-liste_md": LISTE.replace("immagini/foglio", "foglio")}),
         "is not a PNG in immagini/"),
        ("picture without alternative text",
         con(**{"02-liste_md": LISTE.replace("[Il foglio]", "[ ]")}), "has no alternative text"),
        ("link to a missing page", con(**{"01-primo-avvio_md": PRIMO.replace("(02-liste.md)", "(03-liste.md)")}),
         "link 03-liste.md points to no page"),
        ("link to a heading of another page",
         con(**{"01-primo-avvio_md": PRIMO.replace("(02-liste.md)", "(02-liste.md#importare-un-file)")}),
         "link 02-liste.md#importare-un-file names a place in a page"),
        ("link to a heading of the same page", con(**{"01-primo-avvio_md": PRIMO + "[Sopra](#la-finestra)\n"}),
         "link #la-finestra names a place in a page"),
        ("link outside the guide", con(**{"01-primo-avvio_md": PRIMO + "[Leggimi](../../README.md)\n"}),
         "is not a page of the guide"),
        ("chapter not in the contents", con(**{"03-storico_md": "# Storico\n"}),
         "03-storico.md: not in the table of contents"),
        ("chapter badly named", con(**{"storico_md": "# Storico\n", "index_md": INDICE + "3. [S](storico.md)\n"}),
         "storico.md: a chapter is named with a two-digit order"),
        ("no entry page", con(index_md=None), "index.md is missing"),
        ("picture made by no test", con(immagini__origine_txt=ORIGINE.splitlines(True)[0] + ORIGINE.splitlines(True)[1]),
         "immagini/foglio.png: no GUI test makes it"),
        ("origin names a picture that isn't there",
         con(immagini__origine_txt=ORIGINE + "storico.png | test_history | storico | history\n"),
         "origine.txt: storico.png is not in immagini/"),
        ("origin line malformed", con(immagini__origine_txt=ORIGINE + "storico.png | test_history\n"),
         "origine.txt:4: expected"),
        ("a file that isn't a picture", con(immagini__appunti_txt="x"), "only PNG pictures"),
    ]

    def test_casi(self):
        for nome, file, atteso in self.CASI:
            with self.subTest(nome), tempfile.TemporaryDirectory() as cartella:
                scrivi(cartella, file)
                errori = controlla_guida.controlla_pagine(cartella)
                if atteso is None:
                    self.assertEqual(errori, [])
                else:
                    self.assertTrue(any(atteso in errore for errore in errori), f"{atteso!r} not in {errori}")

    def test_esempi_nel_codice_non_sono_collegamenti(self):
        with tempfile.TemporaryDirectory() as cartella:
            pagina = PRIMO + "\n```\n![niente](immagini/niente.png)\n```\n\nScrivi `[testo](pagina.md)`.\n"
            scrivi(cartella, con(**{"01-primo-avvio_md": pagina}))
            self.assertEqual(controlla_guida.controlla_pagine(cartella), [])


class ControllaScript(unittest.TestCase):
    # A stand-in for the picture script: it writes into its second argument what the case asks for.
    CASI = [
        ("every picture made", "cp {png} \"$2/finestra.png\"; cp {png} \"$2/foglio.png\"", None),
        ("one picture not made", "cp {png} \"$2/finestra.png\"", "foglio.png: not made by test_lists"),
        ("a test failed", "echo 'FAIL!  : TestJourney::viaggio()' >&2; exit 1", "failed (1)"),
        ("not a picture", "cp {png} \"$2/finestra.png\"; echo testo > \"$2/foglio.png\"",
         "foglio.png: what test_lists importaFile:title row made is not a picture"),
    ]

    def test_casi(self):
        for nome, corpo, atteso in self.CASI:
            with self.subTest(nome), tempfile.TemporaryDirectory() as cartella:
                guida = os.path.join(cartella, "guida")
                scrivi(guida, guida_sana())
                immagine = os.path.join(cartella, "campione.png")
                scrivi(cartella, {"campione.png": png()})
                script = os.path.join(cartella, "immagini.sh")
                scrivi(cartella, {"immagini.sh": "#!/bin/sh\n" + corpo.replace("{png}", immagine) + "\n"})
                os.chmod(script, 0o755)
                errori = controlla_guida.controlla_script(guida, cartella, script)
                if atteso is None:
                    self.assertEqual(errori, [])
                else:
                    self.assertTrue(any(atteso in errore for errore in errori), f"{atteso!r} not in {errori}")
                # The committed pictures are never written by the check.
                with open(os.path.join(guida, "immagini", "foglio.png"), "rb") as file:
                    self.assertEqual(file.read(), png())


if __name__ == "__main__":
    unittest.main()
