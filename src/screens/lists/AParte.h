#pragma once

#include <QObject>
#include <QThread>

#include <functional>
#include <memory>

// Runs `lavoro` on a thread of its own and hands its result to `fatto` on the main thread, unless `contesto`
// is gone by then. The work gets and gives plain values only.
template <class T> void aParte(QObject* contesto, std::function<T()> lavoro, std::function<void(T)> fatto) {
    auto risultato = std::make_shared<T>();
    QThread* filo = QThread::create([lavoro = std::move(lavoro), risultato] { *risultato = lavoro(); });
    QObject::connect(filo, &QThread::finished, contesto,
                     [risultato, fatto = std::move(fatto)] { fatto(std::move(*risultato)); });
    QObject::connect(filo, &QThread::finished, filo, &QObject::deleteLater);
    filo->start();
}
