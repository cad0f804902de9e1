#include "TempStore.h"
#include "TestEnvironment.h"
#include "ui/Rinfresco.h"

#include <QTest>

// A screen must see every kind of change it shows, once per burst, and nothing it doesn't show.
class TestRinfresco : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void coalesces_data() {
        QTest::addColumn<Store::Entities>("interessa");
        QTest::addColumn<int>("liste");
        QTest::addColumn<int>("esclusioni");
        QTest::addColumn<int>("chiamate");
        QTest::addColumn<Store::Entities>("visto");
        // The first change shows at once, the rest of the burst in one refresh.
        QTest::newRow("a burst of saves")
            << Store::Entities(Store::ContactLists) << 30 << 0 << 2 << Store::Entities(Store::ContactLists);
        QTest::newRow("one save") << Store::Entities(Store::ContactLists) << 1 << 0 << 1
                                  << Store::Entities(Store::ContactLists);
        QTest::newRow("kinds the screen doesn't show")
            << Store::Entities(Store::SendLogs) << 5 << 5 << 0 << Store::Entities();
        QTest::newRow("two kinds gathered") << (Store::ContactLists | Store::Suppressions) << 3 << 2 << 2
                                            << (Store::ContactLists | Store::Suppressions);
    }
    void coalesces() {
        QFETCH(Store::Entities, interessa);
        QFETCH(int, liste);
        QFETCH(int, esclusioni);
        QFETCH(int, chiamate);
        QFETCH(Store::Entities, visto);
        TempStore temp;
        int volte = 0;
        Store::Entities ricevuto;
        // A long interval: the burst below lands well within it, whatever the machine's speed.
        Rinfresco rinfresco(
            *temp.store, interessa, [&](Store::Entities cosa) { ++volte, ricevuto |= cosa; }, nullptr, 60'000);
        // The first change after a quiet spell shows at once; what follows waits for the interval.
        for (int i = 0; i < liste; ++i) {
            ContactList lista(QStringLiteral("L%1").arg(i), {}, {}, {});
            temp.store->insert(lista);
            temp.store->save();
            QCoreApplication::processEvents();
        }
        for (int i = 0; i < esclusioni; ++i) {
            Suppression esclusa;
            esclusa.email = QStringLiteral("a%1@b.example").arg(i);
            temp.store->insert(esclusa);
            temp.store->save();
            QCoreApplication::processEvents();
        }
        QCoreApplication::processEvents();
        rinfresco.esegui();
        QCOMPARE(volte, chiamate);
        QCOMPARE(ricevuto, visto);
        QCOMPARE(rinfresco.inAttesa(), Store::Entities());
    }
};

BREZZARIO_TEST_GUILESS_MAIN(TestRinfresco)
#include "tst_rinfresco.moc"
