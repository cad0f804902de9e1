#include "engine/Tentativo.h"

#include "smtp/SMTPError.h"

QCoro::Task<std::optional<Fallimento>> tenta(QCoro::Task<> passo) {
    try {
        co_await std::move(passo);
    } catch (const SMTPError& errore) {
        co_return Fallimento{errore.errorDescription(), errore.rifiutoDefinitivoDestinatario(),
                             errore.kind() == SMTPError::Case::connectionClosed};
    } catch (const std::exception& altro) {
        co_return Fallimento{QString::fromLocal8Bit(altro.what()), std::nullopt, false};
    }
    co_return std::nullopt;
}
