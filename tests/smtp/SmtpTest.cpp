#include "SmtpTest.h"

#include "Loopback.h"
#include "TestCA.h"
#include "TestEnvironment.h"

namespace {

QCoro::Task<Outcome> capture(QCoro::Task<> operation) {
    Outcome outcome;
    try {
        co_await std::move(operation);
    } catch (const SMTPError& error) {
        outcome.error = error;
    } catch (const std::exception& other) {
        outcome.foreign = QString::fromUtf8(other.what());
    }
    co_return outcome;
}

} // namespace

Outcome runToEnd(QCoro::Task<> operation) {
    return QCoro::waitFor(capture(std::move(operation)));
}

TestCA& TestSMTP::ca() {
    static TestCA authority;
    return authority;
}

const TestCA::Issued& TestSMTP::serverCertificate() {
    static const TestCA::Issued issued = ca().issue(QString::fromLatin1(Loopback::smtp), {}, {Loopback::smtp});
    return issued;
}

void TestSMTP::initTestCase() {
    QVERIFY(ca().isValid());
}

BREZZARIO_TEST_GUILESS_MAIN(TestSMTP)
