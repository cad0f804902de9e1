#pragma once

#include "checks/DNSCheck.h"

#include <QWidget>

#include <functional>
#include <optional>

class NotaView;
class PulsanteAttesa;
class QLabel;

// Judges the sender's domain on SPF, DKIM and DMARC for the service of the SMTP host. It checks by itself
// the first time it is shown, and again at each press of its button.
class DominioCheckView : public QWidget {
    Q_OBJECT
public:
    using OnEsito = std::function<void(const DNSCheck::Risultato&)>;

    DominioCheckView(QString dominio, QString hostSMTP, QWidget* genitore = nullptr, OnEsito onEsito = {});

    // The sender or the host changed; a result already shown stays until the next check.
    void imposta(const QString& dominio, const QString& hostSMTP);
    // Does nothing with an empty domain or while a check runs.
    void verifica();

    const std::optional<DNSCheck::Risultato>& risultato() const { return m_risultato; }
    bool inCorso() const { return m_inCorso; }

protected:
    void showEvent(QShowEvent* evento) override;

private:
    void mostra();

    QString m_dominio;
    QString m_hostSMTP;
    OnEsito m_onEsito;
    std::optional<DNSCheck::Risultato> m_risultato;
    bool m_inCorso = false;
    bool m_giaMostrato = false;

    QLabel* m_introduzione;
    QLabel* m_titolo;
    QList<NotaView*> m_verdetti;
    QLabel* m_suggerimento;
    PulsanteAttesa* m_pulsante;
};
