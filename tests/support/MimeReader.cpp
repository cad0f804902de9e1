#include "MimeReader.h"

#include <QJsonDocument>
#include <QProcess>
#include <QtTest>

namespace TestSupport {

QJsonObject readWithPython(const QByteArray& message) {
    QProcess python;
    python.start(QStringLiteral(BREZZARIO_PYTHON),
                 {QStringLiteral(BREZZARIO_TEST_SUPPORT_DIR) + QStringLiteral("/mime_reader.py")});
    if (!python.waitForStarted(30000)) {
        qWarning("mime_reader.py did not start: %s", qPrintable(python.errorString()));
        return {};
    }
    python.write(message);
    python.closeWriteChannel();
    if (!python.waitForFinished(120000) || python.exitStatus() != QProcess::NormalExit || python.exitCode() != 0) {
        qWarning("mime_reader.py failed: %s", python.readAllStandardError().constData());
        return {};
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(python.readAllStandardOutput(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        qWarning("mime_reader.py printed no JSON object: %s", qPrintable(error.errorString()));
        return {};
    }
    return document.object();
}

} // namespace TestSupport
