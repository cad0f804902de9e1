#include "AiosmtpdServer.h"
#include "app/BrezzarioApp.h"
#include "engine/SendEngine.h"
#include "Loopback.h"
#include "MemoryKeychain.h"
#include "MimeReader.h"
#include "screens/editor/EditorController.h"
#include "screens/editor/RichTextEditor.h"
#include "screens/templates/HTMLPreview.h"
#include "screens/templates/ModelliListModel.h"
#include "screens/templates/PannelloLaterale.h"
#include "screens/templates/PreviewSheet.h"
#include "screens/templates/TemplateEditorPane.h"
#include "screens/templates/TemplatesView.h"
#include "Screenshot.h"
#include "settings/SettingsStore.h"
#include "smtp/SMTPSession.h"
#include "TempStore.h"
#include "TestCA.h"
#include "TestEnvironment.h"
#include "ui/Ambiente.h"
#include "ui/Dialoghi.h"
#include "ui/Palette.h"
#include "ui/Rinfresco.h"
#include "ui/Riquadri.h"

#include <QCheckBox>
#include <QComboBox>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QWebEnginePage>

namespace {

const QString password = AiosmtpdServer::Options().password;

// A real store file, the settings, and the screen on them.
struct Banco {
    TempStore temp;
    Store& store;
    SettingsStore settings;
    Ambiente ambiente{settings, store};
    std::unique_ptr<TemplatesView> vista;
    int creati = 0;

    Banco() : store(*temp.store) {}

    RecordId modello(const QString& nome, const QString& oggetto, const QString& html) {
        MessageTemplate m(nome, oggetto, html);
        // Each one a minute newer than the one before, whatever the clock's resolution.
        m.updatedAt = QDateTime::currentDateTimeUtc().addSecs(-3600 + 60 * ++creati);
        store.insert(m);
        store.save();
        return m.id;
    }
    RecordId lista(const QString& nome, const QStringList& colonne, const QList<RowValues>& righe = {}) {
        ContactList l(nome, nome + QStringLiteral(".csv"), colonne, colonne.first());
        store.insert(l);
        QList<ContactRow> tutte;
        for (const RowValues& valori : righe)
            tutte.append(ContactRow(valori, valori.value(colonne.first())));
        store.insertRows(l.id, tutte);
        store.save();
        return l.id;
    }
    bool apri() {
        vista = std::make_unique<TemplatesView>(ambiente);
        vista->resize(1200, 760);
        vista->show();
        return QTest::qWaitForWindowExposed(vista.get());
    }
    bool pronto() {
        return QTest::qWaitFor([this] { return vista->editor()->isReady(); }, 30000);
    }
    QString htmlPagina() {
        QString risultato = QStringLiteral("<nessuna risposta>");
        bool arrivato = false;
        vista->pane()->editorView()->page()->runJavaScript(QStringLiteral("window.BrezzarioEditor.html()"),
                                                           [&](const QVariant& valore) {
                                                               risultato = valore.toString();
                                                               arrivato = true;
                                                           });
        if (!QTest::qWaitFor([&] { return arrivato; }, 10000))
            return QStringLiteral("<nessuna risposta>");
        return risultato;
    }
    QWidget* dettaglio() { return vista->findChild<QStackedWidget*>()->currentWidget(); }
    NotaView* nota(const QString& nome) { return vista->findChild<NotaView*>(nome); }
};

// An account on this test's address where nothing listens.
SMTPConfig senzaServer() {
    SMTPConfig config;
    config.host = QString::fromLatin1(Loopback::templatesSmtp);
    config.port = 2599;
    config.useTLS = false;
    config.username = AiosmtpdServer::Options().username;
    config.fromEmail = QStringLiteral("mittente@prova.example");
    return config;
}

QString scriviFile(const QTemporaryDir& cartella, const QString& nome, qsizetype byte) {
    const QString percorso = cartella.filePath(nome);
    QFile file(percorso);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(QByteArray(byte, 'x'));
    return percorso;
}

} // namespace

class TestTemplates : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void vuotoENuovo();
    void duplicaConAllegati();
    void eliminaSelezionato();
    void campiMancanti_data();
    void campiMancanti();
    void allegati_data();
    void allegati();
    void modificaDelCorpo();
    void anteprimaEscape();
    void righeDiUnaListaRistretta();
    void pulsanteProva_data();
    void pulsanteProva();
    void invioDiProva();
    void invioDiProvaFallito();
    void collegamentiENessunoScript();

private:
    TestCA& ca() {
        static TestCA autorita;
        return autorita;
    }
    void configura(Banco& banco, const SMTPConfig& server);
    PreviewSheet* apriAnteprima(Banco& banco);

    std::shared_ptr<QHash<MemoryKeychain::Key, QByteArray>> m_segreti;
};

void TestTemplates::initTestCase() {
    BrezzarioApp::preparaApplicazione();
    auto portachiavi = std::make_unique<MemoryKeychain>();
    m_segreti = portachiavi->entries;
    Keychain::setBackend(std::move(portachiavi));
}

void TestTemplates::cleanup() {
    Dialoghi::rispondiAperturaMultipla({});
    HTMLPreview::setApriCollegamento({});
    m_segreti->clear();
}

void TestTemplates::configura(Banco& banco, const SMTPConfig& server) {
    SMTPConfig config = server;
    config.fromName = QStringLiteral("Ditta Prova");
    config.piePaginaAttivo = true;
    config.emailDisiscrizione = QStringLiteral("esci@prova.example");
    config.mittentePostale = QStringLiteral("Ditta Prova srl, via Roma 1, Bari");
    banco.settings.setConfig(config);
    m_segreti->insert({Keychain::servizio, banco.settings.accountCorrente()}, password.toUtf8());
}

PreviewSheet* TestTemplates::apriAnteprima(Banco& banco) {
    banco.vista->findChild<QPushButton*>(QStringLiteral("anteprima"))->click();
    PreviewSheet* foglio = banco.vista->anteprima();
    if (foglio && !QTest::qWaitForWindowExposed(foglio))
        return nullptr;
    return foglio;
}

// An empty store shows the placeholder; "Nuovo modello" creates, selects and shows the first template.
void TestTemplates::vuotoENuovo() {
    Banco banco;
    QVERIFY(banco.apri());
    QCOMPARE(banco.vista->elenco()->model()->rowCount(), 0);
    QCOMPARE(banco.dettaglio()->objectName(), QStringLiteral("nessunModello"));
    TestSupport::salvaSchermata(banco.vista.get(), QStringLiteral("modelli-vuoto"));

    QTest::mouseClick(banco.vista->findChild<QToolButton*>(QStringLiteral("nuovoModello")), Qt::LeftButton);
    const QList<MessageTemplate> modelli = banco.store.all<MessageTemplate>();
    QCOMPARE(modelli.size(), 1);
    QCOMPARE(modelli.first().name, QStringLiteral("Nuovo modello"));
    QCOMPARE(banco.vista->selezione(), modelli.first().id);
    QCOMPARE(banco.dettaglio()->objectName(), QStringLiteral("templateEditorPane"));
    QCOMPARE(banco.vista->pane()->campoNome()->text(), QStringLiteral("Nuovo modello"));
    QCOMPARE(banco.vista->elenco()->model()->index(0, 0).data(ModelliListModel::OggettoRole).toString(),
             QStringLiteral("(nessun oggetto)"));
    // A name cleared to nothing reads "Senza nome" in the list.
    QTest::keyClick(banco.vista->pane()->campoNome(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(banco.vista->pane()->campoNome(), Qt::Key_Delete);
    QCOMPARE(banco.store.all<MessageTemplate>().first().name, QString());
    QTRY_COMPARE(banco.vista->elenco()->model()->index(0, 0).data().toString(), QStringLiteral("Senza nome"));
    QVERIFY(banco.pronto());
    QTRY_COMPARE(banco.htmlPagina(), modelli.first().html);
    // The page hands the untouched content back as it was: nothing moves.
    QTest::qWait(300);
    QCOMPARE(banco.store.find<MessageTemplate>(modelli.first().id)->updatedAt, modelli.first().updatedAt);
    TestSupport::salvaSchermata(banco.vista.get(), QStringLiteral("modelli-nuovo"));
}

// The copy is named after the source and gets copies of its attachments: the two stay independent.
void TestTemplates::duplicaConAllegati() {
    Banco banco;
    const RecordId sorgente = banco.modello(QStringLiteral("Saldi"), QStringLiteral("Offerta {{nome}}"),
                                            QStringLiteral("<div>Ciao {{nome}}</div>"));
    for (const QString& nome : {QStringLiteral("listino.pdf"), QStringLiteral("foto.jpg")}) {
        TemplateAttachment allegato(nome, QStringLiteral("application/pdf"), nome.toUtf8().repeated(100));
        allegato.templateId = sorgente;
        banco.store.insert(allegato);
    }
    banco.store.save();
    QVERIFY(banco.apri());
    banco.vista->duplica(sorgente);

    const RecordId copia = banco.vista->selezione();
    QVERIFY(copia != sorgente && copia != 0);
    QCOMPARE(banco.store.find<MessageTemplate>(copia)->name, QStringLiteral("Saldi (copia)"));
    QCOMPARE(banco.store.find<MessageTemplate>(copia)->subject, QStringLiteral("Offerta {{nome}}"));
    const QList<TemplateAttachment> originali = banco.store.attachments(sorgente);
    const QList<TemplateAttachment> copiati = banco.store.attachments(copia);
    QCOMPARE(copiati.size(), 2);
    for (qsizetype i = 0; i < 2; ++i) {
        QCOMPARE(copiati.at(i).filename, originali.at(i).filename);
        QCOMPARE(copiati.at(i).data, originali.at(i).data);
        QVERIFY(copiati.at(i).id != originali.at(i).id);
    }
    banco.vista->elimina(sorgente);
    QCOMPARE(banco.store.attachments(copia).size(), 2);
    QCOMPARE(banco.vista->selezione(), copia);
}

// Deleting the shown template brings back the placeholder and empties the page.
void TestTemplates::eliminaSelezionato() {
    Banco banco;
    const RecordId altro = banco.modello(QStringLiteral("Altro"), QString(), QStringLiteral("<div>altro</div>"));
    const RecordId scelto = banco.modello(QStringLiteral("Scelto"), QString(), QStringLiteral("<div>scelto</div>"));
    QVERIFY(banco.apri());
    QCOMPARE(banco.vista->selezione(), scelto); // the newest first
    QVERIFY(banco.pronto());
    QTRY_COMPARE(banco.htmlPagina(), QStringLiteral("<div>scelto</div>"));
    banco.vista->elimina(scelto);
    QCOMPARE(banco.vista->selezione(), RecordId(0));
    QCOMPARE(banco.dettaglio()->objectName(), QStringLiteral("nessunModello"));
    QTRY_COMPARE(banco.htmlPagina(), QString());
    QVERIFY(!banco.store.find<MessageTemplate>(scelto));
    QCOMPARE(banco.store.find<MessageTemplate>(altro)->html, QStringLiteral("<div>altro</div>"));
    QCOMPARE(banco.vista->elenco()->model()->rowCount(), 1);
    TestSupport::salvaSchermata(banco.vista.get(), QStringLiteral("modelli-dopo-elimina"));
}

void TestTemplates::campiMancanti_data() {
    QTest::addColumn<QStringList>("colonne"); // empty: "Nessuna"
    QTest::addColumn<QString>("oggetto");
    QTest::addColumn<QString>("avviso");
    QTest::addColumn<int>("chip");
    QTest::newRow("column missing") << QStringList{"email", "nome"} << "Per {{nome}}"
                                    << "Campi non presenti nella lista: ragione" << 2;
    QTest::newRow("case doesn't count") << QStringList{"email", "Ragione", "Nome"} << ""
                                        << "" << 3;
    QTest::newRow("a field of the subject counts") << QStringList{"email", "ragione"} << "Per {{Città}}"
                                                   << "Campi non presenti nella lista: Città" << 2;
    QTest::newRow("several, in order") << QStringList{"email"} << "{{nome}}"
                                       << "Campi non presenti nella lista: nome, ragione" << 1;
    QTest::newRow("no reference list: no warning, no chip") << QStringList{} << "{{x}}"
                                                            << "" << 0;
}

void TestTemplates::campiMancanti() {
    QFETCH(QStringList, colonne);
    QFETCH(QString, oggetto);
    QFETCH(QString, avviso);
    QFETCH(int, chip);
    Banco banco;
    banco.modello(QStringLiteral("Lettera"), oggetto, QStringLiteral("<div>Spett. {{ragione}}</div>"));
    if (!colonne.isEmpty())
        banco.lista(QStringLiteral("Clienti"), colonne);
    QVERIFY(banco.apri());
    NotaView* nota = banco.nota(QStringLiteral("campiMancanti"));
    QCOMPARE(nota->isVisible(), !avviso.isEmpty());
    if (!avviso.isEmpty())
        QCOMPARE(nota->testo(), avviso);
    QWidget* chipCampi = banco.vista->findChild<QWidget*>(QStringLiteral("chipCampi"));
    const QList<QToolButton*> chipMostrati = chipCampi->findChildren<QToolButton*>();
    QCOMPARE(chipMostrati.size(), chip);
    QCOMPARE(chipCampi->isVisible(), chip > 0);
    if (chip > 0)
        QCOMPARE(chipMostrati.first()->toolTip(), QStringLiteral("Inserisce il banner {{%1}}").arg(colonne.first()));
    if (QByteArray(QTest::currentDataTag()) == "column missing") {
        // A chip goes into the page as a field, and the template is saved with it.
        QVERIFY(banco.pronto());
        QTRY_VERIFY(banco.htmlPagina().contains(QStringLiteral("{{ragione}}")));
        QTest::mouseClick(chipCampi->findChild<QToolButton*>(QStringLiteral("chip-nome")), Qt::LeftButton);
        // Never clicked into, the page puts it at the end, as one field and nothing else.
        QTRY_COMPARE(banco.store.all<MessageTemplate>().first().html,
                     QStringLiteral("<div>Spett. {{ragione}}{{nome}}</div>"));
        TestSupport::salvaSchermata(banco.vista.get(), QStringLiteral("modelli-campi-mancanti"));
        // The "Campo" menu appends to the subject.
        auto* campo = banco.vista->findChild<QToolButton*>(QStringLiteral("campo"));
        campo->menu()->actions().at(1)->trigger();
        QCOMPARE(banco.store.all<MessageTemplate>().first().subject, QStringLiteral("Per {{nome}}{{nome}}"));
    }
    if (colonne.isEmpty()) {
        auto* campo = banco.vista->findChild<QToolButton*>(QStringLiteral("campo"));
        QCOMPARE(campo->menu()->actions().size(), 1);
        QCOMPARE(campo->menu()->actions().first()->text(), QStringLiteral("Nessuna lista di riferimento"));
    }
}

void TestTemplates::allegati_data() {
    QTest::addColumn<QList<qsizetype>>("dimensioni");
    QTest::addColumn<bool>("avviso");
    QTest::newRow("6 MB and 5 MB") << QList<qsizetype>{6000000, 5000000} << true;
    QTest::newRow("exactly 10,000,000 bytes") << QList<qsizetype>{6000000, 4000000} << false;
    QTest::newRow("one byte more") << QList<qsizetype>{10000001} << true;
    QTest::newRow("small") << QList<qsizetype>{1200} << false;
}

// Files chosen in the panel are read into the store; one that can't be read is passed over.
void TestTemplates::allegati() {
    QFETCH(QList<qsizetype>, dimensioni);
    QFETCH(bool, avviso);
    Banco banco;
    const RecordId id = banco.modello(QStringLiteral("Catalogo"), QString(), QStringLiteral("<div>x</div>"));
    QVERIFY(banco.apri());
    QTemporaryDir cartella;
    QStringList percorsi;
    for (qsizetype i = 0; i < dimensioni.size(); ++i)
        percorsi.append(scriviFile(cartella, QStringLiteral("catalogo-%1.pdf").arg(i + 1), dimensioni.at(i)));
    percorsi.insert(1, cartella.filePath(QStringLiteral("sparito.pdf")));
    Dialoghi::rispondiAperturaMultipla([&] { return percorsi; });
    QVERIFY(banco.vista->findChild<QLabel*>(QStringLiteral("nessunAllegato"))->isVisible());
    QTest::mouseClick(banco.vista->findChild<QToolButton*>(QStringLiteral("aggiungiAllegati")), Qt::LeftButton);

    const QList<TemplateAttachment> salvati = banco.store.attachments(id);
    QCOMPARE(salvati.size(), dimensioni.size());
    QCOMPARE(salvati.first().mimeType, QStringLiteral("application/pdf"));
    QCOMPARE(salvati.first().data.size(), dimensioni.first());
    QTRY_VERIFY(!banco.vista->findChild<QLabel*>(QStringLiteral("nessunAllegato"))->isVisible());
    QCOMPARE(banco.nota(QStringLiteral("oltreSoglia"))->isVisible(), avviso);
    QWidget* riga = banco.vista->findChild<QWidget*>(QStringLiteral("allegato-%1").arg(salvati.first().id));
    QVERIFY(riga);
    QCOMPARE(riga->findChild<QLabel*>(QStringLiteral("dimensione"))->text(), salvati.first().sizeDescription());
    TestSupport::salvaSchermata(banco.vista.get(), QStringLiteral("modelli-allegati-%1").arg(QTest::currentDataTag()));

    // The bin deletes one at once.
    QTest::mouseClick(riga->findChild<QToolButton*>(QStringLiteral("elimina")), Qt::LeftButton);
    QCOMPARE(banco.store.attachments(id).size(), dimensioni.size() - 1);
    if (dimensioni.size() == 1)
        QTRY_VERIFY(banco.vista->findChild<QLabel*>(QStringLiteral("nessunAllegato"))->isVisible());
}

// Typing in the page saves the body and moves the template up; moving to another template never
// writes the old text into it.
void TestTemplates::modificaDelCorpo() {
    Banco banco;
    const RecordId primo = banco.modello(QStringLiteral("Primo"), QString(), QStringLiteral("<div>uno</div>"));
    const RecordId secondo = banco.modello(QStringLiteral("Secondo"), QString(), QStringLiteral("<div>due</div>"));
    QVERIFY(banco.apri());
    QVERIFY(banco.pronto());
    QTRY_COMPARE(banco.htmlPagina(), QStringLiteral("<div>due</div>"));
    RichTextEditor* pagina = banco.vista->pane()->editorView();
    pagina->setFocus();
    pagina->page()->runJavaScript(QStringLiteral(
        "(function(){var c=document.getElementById('contenuto');c.focus();var r=document.createRange();"
        "r.selectNodeContents(c);r.collapse(false);var s=getSelection();s.removeAllRanges();s.addRange(r);})()"));
    QTest::qWait(100);
    QTest::keyClicks(pagina->focusProxy(), QStringLiteral(" tre"));
    // The keys are in the page; the last of them wait there to be reported when the selection moves.
    QTRY_COMPARE(banco.htmlPagina(), QStringLiteral("<div>due tre</div>"));
    banco.vista->seleziona(primo);
    QTRY_COMPARE(banco.store.find<MessageTemplate>(secondo)->html, QStringLiteral("<div>due tre</div>"));
    QTRY_COMPARE(banco.htmlPagina(), QStringLiteral("<div>uno</div>"));
    QTest::qWait(400);
    QCOMPARE(banco.store.find<MessageTemplate>(primo)->html, QStringLiteral("<div>uno</div>"));
    // The edited one is now the newest.
    QTRY_COMPARE(banco.vista->elenco()->model()->index(0, 0).data().toString(), QStringLiteral("Secondo"));

    // Name and subject are saved as typed and leave the order alone.
    const QDateTime prima = banco.store.find<MessageTemplate>(primo)->updatedAt;
    QTest::keyClicks(banco.vista->pane()->campoOggetto(), QStringLiteral("Ciao {{nome}}"));
    QCOMPARE(banco.store.find<MessageTemplate>(primo)->subject, QStringLiteral("Ciao {{nome}}"));
    QCOMPARE(banco.store.find<MessageTemplate>(primo)->updatedAt, prima);
}

// A value with markup in it is shown as text, in the page and in the source, inside the frame with
// the footer as configured.
void TestTemplates::anteprimaEscape() {
    Banco banco;
    configura(banco, senzaServer());
    banco.modello(QStringLiteral("Saldi"), QStringLiteral("Offerta per {{nome}}"),
                  QStringLiteral("<div>Gentile {{nome}},</div><div>ecco i saldi.</div>"));
    banco.lista(QStringLiteral("Clienti"), {"email", "nome"},
                {{{"email", "rossi@ditta.it"}, {"nome", "<b>Rossi</b> & C"}}});
    QVERIFY(banco.apri());
    PreviewSheet* foglio = apriAnteprima(banco);
    QVERIFY(foglio);
    QCOMPARE(foglio->findChild<QLabel*>(QStringLiteral("oggettoReso"))->text(),
             QStringLiteral("Offerta per <b>Rossi</b> & C"));
    const QString corpo = foglio->corpoRenderizzato();
    QVERIFY2(corpo.contains(QStringLiteral("Gentile &lt;b&gt;Rossi&lt;/b&gt; &amp; C,")), qPrintable(corpo));
    QVERIFY(corpo.startsWith(QStringLiteral("<!DOCTYPE html PUBLIC")));
    QVERIFY(corpo.contains(QStringLiteral("Cancella la tua iscrizione")));
    QVERIFY(corpo.contains(QStringLiteral("Ditta Prova srl, via Roma 1, Bari")));
    auto* anteprima = foglio->findChild<HTMLPreview*>();
    QCOMPARE(anteprima->ultimoHTML(), corpo);
    QString testo;
    QTRY_VERIFY_WITH_TIMEOUT(
        [&] {
            bool arrivato = false;
            anteprima->page()->toPlainText([&](const QString& t) {
                testo = t;
                arrivato = true;
            });
            return QTest::qWaitFor([&] { return arrivato; }, 5000) &&
                   testo.contains(QStringLiteral("Gentile <b>Rossi</b> & C,"));
        }(),
        20000);
    TestSupport::salvaSchermata(foglio, QStringLiteral("anteprima-pagina"));

    foglio->findChild<QCheckBox*>(QStringLiteral("sorgente"))->setChecked(true);
    auto* sorgente = foglio->findChild<QPlainTextEdit*>(QStringLiteral("sorgenteHTML"));
    QVERIFY(sorgente->isVisible());
    QCOMPARE(sorgente->toPlainText(), corpo);
    TestSupport::salvaSchermata(foglio, QStringLiteral("anteprima-sorgente"));
    foglio->close();
}

// Only rows that could receive the message, by address; a list that shrinks shows its last row.
void TestTemplates::righeDiUnaListaRistretta() {
    Banco banco;
    banco.modello(QStringLiteral("Saldi"), QString(), QStringLiteral("<div>{{nome}}</div>"));
    const RecordId lista = banco.lista(QStringLiteral("Clienti"), {"email", "nome"},
                                       {{{"email", "zeta@ditta.it"}, {"nome", "Zeta"}},
                                        {{"email", "non-valido"}, {"nome", "Nessuno"}},
                                        {{"email", "alfa@ditta.it"}, {"nome", "Alfa"}},
                                        {{"email", "escluso@ditta.it"}, {"nome", "Escluso"}},
                                        {{"email", "beta@ditta.it"}, {"nome", "Beta"}}});
    QList<ContactRow> righe = banco.store.rows(lista);
    righe[3].isExcluded = true;
    banco.store.update(righe[3]);
    banco.store.save();
    QVERIFY(banco.apri());
    PreviewSheet* foglio = apriAnteprima(banco);
    QVERIFY(foglio);
    auto* scelta = foglio->findChild<QComboBox*>(QStringLiteral("rigaDiEsempio"));
    QCOMPARE(scelta->count(), 3);
    QCOMPARE(scelta->itemText(0), QStringLiteral("alfa@ditta.it"));
    QCOMPARE(scelta->itemText(2), QStringLiteral("zeta@ditta.it"));
    foglio->setIndiceRiga(2);
    QCOMPARE(foglio->valoriCorrenti().value(QStringLiteral("nome")), QStringLiteral("Zeta"));

    // Zeta and Beta go: the picker can't stay past the end, and shows the one row left.
    banco.store.remove<ContactRow>(righe[0].id);
    banco.store.remove<ContactRow>(righe[4].id);
    banco.store.save();
    QTRY_COMPARE(scelta->count(), 1);
    QCOMPARE(scelta->currentIndex(), 0);
    QCOMPARE(foglio->valoriCorrenti().value(QStringLiteral("nome")), QStringLiteral("Alfa"));
    QCOMPARE(foglio->findChild<QLabel*>(QStringLiteral("oggettoReso"))->text(), QStringLiteral("(vuoto)"));

    // No row left: fields empty, and the note says why.
    banco.store.remove<ContactRow>(righe[2].id);
    banco.store.save();
    QTRY_VERIFY(foglio->righe().isEmpty());
    QVERIFY(foglio->findChild<NotaView*>(QStringLiteral("senzaRighe"))->isVisible());
    QVERIFY(!scelta->isVisible());
    QVERIFY(foglio->corpoRenderizzato().contains(QStringLiteral("<div></div>")));
    TestSupport::salvaSchermata(foglio, QStringLiteral("anteprima-senza-righe"));
    foglio->close();
}

void TestTemplates::pulsanteProva_data() {
    QTest::addColumn<bool>("configurato");
    QTest::addColumn<QString>("indirizzo");
    QTest::addColumn<bool>("abilitato");
    QTest::newRow("empty address") << true << "" << false;
    QTest::newRow("not an address") << true << "prova@" << false;
    QTest::newRow("blanks round it") << true << "  prova@ditta.it \n" << true;
    QTest::newRow("settings incomplete") << false << "prova@ditta.it" << false;
}

void TestTemplates::pulsanteProva() {
    QFETCH(bool, configurato);
    QFETCH(QString, indirizzo);
    QFETCH(bool, abilitato);
    Banco banco;
    if (configurato)
        configura(banco, senzaServer());
    banco.modello(QStringLiteral("Saldi"), QString(), QStringLiteral("<div>x</div>"));
    QVERIFY(banco.apri());
    PreviewSheet* foglio = apriAnteprima(banco);
    QVERIFY(foglio);
    // The password was fetched when the sheet appeared.
    QCOMPARE(banco.settings.password(), configurato ? password : QString());
    foglio->findChild<QLineEdit*>(QStringLiteral("indirizzoProva"))->setText(indirizzo);
    QCOMPARE(foglio->findChild<QPushButton*>(QStringLiteral("inviaProva"))->isEnabled(), abilitato);
    QCOMPARE(foglio->findChild<QLabel*>(QStringLiteral("impostazioniIncomplete"))->isVisible(), !configurato);
    // No list at all: the preview shows the fields empty.
    QVERIFY(foglio->findChild<NotaView*>(QStringLiteral("senzaRighe"))->isVisible());
    foglio->close();
}

// A real message through aiosmtpd with implicit TLS and AUTH: "[PROVA] ", no List-Unsubscribe, the
// attachment, one `test` log, and the result in green.
void TestTemplates::invioDiProva() {
    AiosmtpdServer server(AiosmtpdServer::withTls(ca(), QString::fromLatin1(Loopback::templatesSmtp)));
    QVERIFY2(server.start(), qPrintable(server.errorString()));
    Banco banco;
    configura(banco, server.config());
    const RecordId id = banco.modello(QStringLiteral("Saldi"), QStringLiteral("Offerta per {{nome}}"),
                                      QStringLiteral("<div>Gentile {{nome}}</div>"));
    TemplateAttachment allegato(QStringLiteral("listino.pdf"), QStringLiteral("application/pdf"),
                                QByteArray("%PDF-1.4 listino"));
    allegato.templateId = id;
    banco.store.insert(allegato);
    banco.lista(QStringLiteral("Clienti"), {"email", "nome"}, {{{"email", "anna@ditta.it"}, {"nome", "Anna"}}});
    QVERIFY(banco.apri());
    PreviewSheet* foglio = apriAnteprima(banco);
    QVERIFY(foglio);
    const SMTPSession::Options opzioni = AiosmtpdServer::sessionOptions(&ca());
    foglio->motore()->setFabbricaSessionePerTest(
        [opzioni](const SMTPConfig& c, const QString& p) { return std::make_unique<SMTPSession>(c, p, opzioni); });
    foglio->findChild<QLineEdit*>(QStringLiteral("indirizzoProva"))->setText(QStringLiteral(" prova@ditta.it "));
    QTest::mouseClick(foglio->findChild<QPushButton*>(QStringLiteral("inviaProva")), Qt::LeftButton);
    QVERIFY(foglio->invioInCorso());
    QVERIFY(foglio->findChild<QWidget*>(QStringLiteral("attesaProva"))->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!foglio->invioInCorso(), 30000);
    QCOMPARE(foglio->esito().value_or(QString()), QStringLiteral("Messaggio di prova inviato a prova@ditta.it."));
    // The clicked button hid during the send; the keyboard went back to the address, not into the preview.
    QCOMPARE(QApplication::focusWidget(), foglio->findChild<QLineEdit*>(QStringLiteral("indirizzoProva")));
    auto* esito = foglio->findChild<QLabel*>(QStringLiteral("esitoProva"));
    QVERIFY(esito->isVisible());
    QVERIFY(esito->styleSheet().contains(Palette::css(Palette::colore(Colore::green))));
    TestSupport::salvaSchermata(foglio, QStringLiteral("anteprima-prova-inviata"));

    const QList<AiosmtpdServer::Message> ricevuti = server.messages();
    QCOMPARE(ricevuti.size(), 1);
    QCOMPARE(ricevuti.first().rcptTos, QStringList{"prova@ditta.it"});
    QCOMPARE(ricevuti.first().authenticatedAs, AiosmtpdServer::Options().username);
    const QJsonObject letto = TestSupport::readWithPython(ricevuti.first().data);
    QCOMPARE(letto.value("subject").toString(), QStringLiteral("[PROVA] Offerta per Anna"));
    QVERIFY(!letto.value("raw").toObject().contains("List-Unsubscribe"));
    QStringList nomi;
    for (const QJsonValue& foglia : letto.value("leaves").toArray())
        nomi.append(foglia.toObject().value("filename").toString());
    QVERIFY2(nomi.contains(QStringLiteral("listino.pdf")), qPrintable(nomi.join(u',')));
    const QList<SendLog> logs = banco.store.all<SendLog>();
    QCOMPARE(logs.size(), 1);
    QCOMPARE(logs.first().status(), SendStatus::test);
    QCOMPARE(logs.first().email, QStringLiteral("prova@ditta.it"));
    foglio->close();
}

// A server that isn't there: the Italian text in red, and no log.
void TestTemplates::invioDiProvaFallito() {
    Banco banco;
    configura(banco, senzaServer());
    banco.modello(QStringLiteral("Saldi"), QString(), QStringLiteral("<div>x</div>"));
    QVERIFY(banco.apri());
    PreviewSheet* foglio = apriAnteprima(banco);
    QVERIFY(foglio);
    foglio->findChild<QLineEdit*>(QStringLiteral("indirizzoProva"))->setText(QStringLiteral("prova@ditta.it"));
    foglio->inviaProva();
    QTRY_VERIFY_WITH_TIMEOUT(!foglio->invioInCorso(), 30000);
    const QString esito = foglio->esito().value_or(QString());
    QVERIFY2(esito.startsWith(QStringLiteral("Invio di prova fallito: ")), qPrintable(esito));
    QVERIFY(foglio->findChild<QLabel*>(QStringLiteral("esitoProva"))
                ->styleSheet()
                .contains(Palette::css(Palette::colore(Colore::red))));
    QVERIFY(banco.store.all<SendLog>().isEmpty());
    QVERIFY(foglio->findChild<QPushButton*>(QStringLiteral("inviaProva"))->isEnabled());
    TestSupport::salvaSchermata(foglio, QStringLiteral("anteprima-prova-fallita"));
    foglio->close();
}

// A click on a link goes to the browser and the preview stays; the message's scripts never run.
void TestTemplates::collegamentiENessunoScript() {
    QList<QUrl> aperti;
    HTMLPreview::setApriCollegamento([&](const QUrl& url) { aperti.append(url); });
    HTMLPreview anteprima;
    anteprima.resize(500, 400);
    anteprima.show();
    QVERIFY(QTest::qWaitForWindowExposed(&anteprima));
    QSignalSpy caricata(&anteprima, &QWebEngineView::loadFinished);
    anteprima.setHtml(QStringLiteral(
        "<html><head><title>fermo</title></head><body style=\"margin:0\"><script>document.title='eseguito'</script>"
        "<a href=\"https://nembrosa.example/offerta\" style=\"display:block;height:300px\">vai</a></body></html>"));
    QVERIFY(caricata.wait(20000));
    QTest::qWait(300);
    QCOMPARE(anteprima.title(), QStringLiteral("fermo"));
    QTest::mouseClick(anteprima.focusProxy(), Qt::LeftButton, {}, QPoint(40, 40));
    QTRY_COMPARE(aperti, QList<QUrl>{QUrl(QStringLiteral("https://nembrosa.example/offerta"))});
    QTest::qWait(300);
    QCOMPARE(anteprima.title(), QStringLiteral("fermo"));
    QVERIFY(anteprima.url().scheme() != QLatin1String("https"));

    // A message with pictures past what the engine takes inline still shows, and behaves the same.
    aperti.clear();
    const QString figura = QStringLiteral("data:image/gif;base64,") + QString(900000, u'A');
    anteprima.setHtml(QStringLiteral("<html><head><title>grande</title></head><body style=\"margin:0\">"
                                     "<script>document.title='eseguito'</script><a href=\"https://nembrosa.example/"
                                     "grande\" style=\"display:block;height:300px\">vai</a><img src=\"%1\"></body>"
                                     "</html>")
                          .arg(figura));
    QVERIFY(caricata.wait(20000));
    QTRY_COMPARE(anteprima.title(), QStringLiteral("grande"));
    QTest::mouseClick(anteprima.focusProxy(), Qt::LeftButton, {}, QPoint(40, 40));
    QTRY_COMPARE(aperti, QList<QUrl>{QUrl(QStringLiteral("https://nembrosa.example/grande"))});
    QCOMPARE(anteprima.title(), QStringLiteral("grande"));
}

BREZZARIO_TEST_MAIN(TestTemplates)
#include "tst_templates.moc"
