#include "records/Casuale.h"

#include <QRandomGenerator>

QUuid uuidCasuale() {
    quint64 bits[2];
    QRandomGenerator::global()->fillRange(bits);
    QByteArray bytes(reinterpret_cast<const char*>(bits), sizeof bits);
    bytes[6] = char((bytes[6] & 0x0F) | 0x40); // version 4
    bytes[8] = char((bytes[8] & 0x3F) | 0x80); // RFC 4122 variant
    return QUuid::fromRfc4122(bytes);
}
