#pragma once

#include <QCoro/QCoroTask>
#include <QString>

#include <optional>

// How one network step of a run or a test send went wrong, as the user reads it.
struct Fallimento {
    QString testo;
    std::optional<QString> rifiutoDefinitivo; // the server refused this recipient for good
    bool connessioneChiusa = false;
};

// Awaits the step and turns whatever it throws into a value: a coroutine can't await inside a catch
// block, and the engine decides what to do next after the failure.
QCoro::Task<std::optional<Fallimento>> tenta(QCoro::Task<> passo);
