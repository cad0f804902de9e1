"""Writes a contact list as an Italian spreadsheet program exports it with "CSV (separatore: punto e virgola)":
Windows-1252, semicolons, CR LF at the end of each row, a title row padded with semicolons to the table's
width and an empty row under it, then the header and the data. A field is quoted when it holds a semicolon,
a double quote or a line break; quotes inside are doubled, and a line break inside a cell is a bare LF.
Some cells hold the characters that only Windows-1252 has (euro sign, typographic apostrophe and quotes).
Usage: make_csv.py FILE ROWS"""
import csv
import random
import sys

NOMI = ["Mario", "Anna", "Giuseppe", "Lucia", "Niccolò", "Chiara", "Francesco", "Giulia", "Andrea", "Zoë",
        "Luca", "Martina", "Pietro", "Sofia", "Davide", "Alessia", "Matteo", "Elena", "Simone", "Federica"]
COGNOMI = ["Rossi", "Bianchi", "Verdi", "Esposito", "Romano", "Colombo", "Ricci", "Marino", "Greco", "Bruno",
           "Gallo", "Conti", "De Luca", "Mancini", "Costa", "Giordano", "D’Angelo", "Lombardi", "Moretti", "Barbieri"]
VIE = ["Via Garibaldi", "Corso Italia", "Piazza Duomo", "Via Roma", "Viale dei Mille", "Via Dante Alighieri",
       "Largo Augusto", "Via XX Settembre", "Piazza della Libertà", "Via San Francesco d’Assisi"]
CITTA = [("Milano", "MI", "20121"), ("Roma", "RM", "00184"), ("Napoli", "NA", "80133"), ("Torino", "TO", "10121"),
         ("Forlì", "FC", "47121"), ("Cantù", "CO", "22063"), ("Bologna", "BO", "40121"), ("Firenze", "FI", "50122")]
NOTE = ["", "", "", "Cliente dal 2019; preferisce essere contattato di mattina",
        'Ha chiesto il "preventivo B" per la fornitura annuale',
        "Consegna al piano terra\nCitofono: Studio associato", "Pagamento a 30 giorni, fattura elettronica",
        "Sconto “fedeltà” del 5% sull’ordine; rinnovo a marzo"]
DOMINI = ["example.it", "esempio.com", "posta.example.net", "azienda.example.org"]
COLONNE = ["Nome", "Cognome", "Email", "Telefono", "Indirizzo", "CAP", "Città", "Provincia", "Ragione sociale",
           "Sito web", "Importo", "Data iscrizione", "Note", "Consenso privacy"]


def semplice(testo):
    return testo.lower().replace(" ", "").replace("’", "")


def main():
    path, count = sys.argv[1], int(sys.argv[2])
    rnd = random.Random(2026)
    with open(path, "w", encoding="cp1252", newline="") as out:
        writer = csv.writer(out, delimiter=";", lineterminator="\r\n", quoting=csv.QUOTE_MINIMAL)
        writer.writerow(["Elenco clienti al 31/12/2025 – esportato dal gestionale"] + [""] * (len(COLONNE) - 1))
        writer.writerow([""] * len(COLONNE))
        writer.writerow(COLONNE)
        for i in range(count):
            nome, cognome = rnd.choice(NOMI), rnd.choice(COGNOMI)
            citta, provincia, cap = rnd.choice(CITTA)
            writer.writerow([
                nome, cognome,
                f"{semplice(nome)}.{semplice(cognome)}{i}@{rnd.choice(DOMINI)}",
                f"+39 0{rnd.randint(2, 99)} {rnd.randint(100000, 9999999)}",
                f"{rnd.choice(VIE)}, {rnd.randint(1, 250)}" + ("; scala B, interno 4" if i % 7 == 0 else ""),
                cap, citta, provincia,
                f"{cognome} & {rnd.choice(COGNOMI)} S.r.l. - Consulenza fiscale e del lavoro",
                f"https://www.{semplice(cognome)}-consulenze.example.it",
                f"{rnd.randint(0, 9999)},{rnd.randint(0, 99):02d} €",
                f"{rnd.randint(1, 28):02d}/{rnd.randint(1, 12):02d}/{rnd.randint(2010, 2026)}",
                rnd.choice(NOTE),
                rnd.choice(["sì", "no"]),
            ])


main()
