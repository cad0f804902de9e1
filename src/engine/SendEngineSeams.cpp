#include "engine/SendEngine.h"

#include "checks/Dig.h"
#include "checks/MXCheck.h"
#include "settings/SMTPConfig.h"
#include "smtp/SMTPSession.h"

SendEngine::Plan SendEngine::plan(const Campaign& campaign, const std::optional<ContactList>& list,
                                  const QSet<QString>& suppressed, const Store& store) {
    return RunPlanning::plan(campaign, list, suppressed, store);
}

std::optional<ContactList> SendEngine::listaValida(const Campaign& campaign, const Store& store) {
    return RunPlanning::listaValida(campaign, store);
}

std::optional<MessageTemplate> SendEngine::modelloValido(const Campaign& campaign, const Store& store) {
    return RunPlanning::modelloValido(campaign, store);
}

int SendEngine::inviateUltime24Ore(const Store& store, const QString& servizio) {
    return RunPlanning::inviateUltime24Ore(store, servizio);
}

QSet<QString> SendEngine::suppressedEmails(const Store& store) {
    return store.suppressedEmails();
}

QHash<QString, QList<ContactRow>> SendEngine::righePerEmail(const Store& store) {
    return store.righePerEmail();
}

void SendEngine::setFabbricaSessionePerTest(FabbricaSessione fabbrica) {
    m_fabbricaSessione = std::move(fabbrica);
}

std::unique_ptr<SMTPSession> SendEngine::nuovaSessione(const SMTPConfig& config, const QString& password) const {
    if (m_fabbricaSessione)
        return m_fabbricaSessione(config, password);
    return std::make_unique<SMTPSession>(config, password);
}

void SendEngine::setControlloDominiPerTest(const QString& resolver, const QString& dig) {
    Dig::setResolverForTests(resolver);
    Dig::setExecutableForTests(dig);
}

void SendEngine::svuotaCacheDominiPerTest() {
    MXCheck::svuotaCachePerTest();
}
