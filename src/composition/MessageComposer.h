#pragma once

#include "records/ContactRow.h"
#include "records/MessageTemplate.h"
#include "settings/SMTPConfig.h"

#include <QString>

// One recipient's subject, page and plain text, made the same way by a run and by a test send.
namespace MessageComposer {

struct Rendered {
    QString subject;
    QString html;      // the whole page, footer included
    QString plainText; // with the footer's text after a "-- " line when there is a footer
};

Rendered compose(const MessageTemplate& template_, const RowValues& values, const SMTPConfig& config);

} // namespace MessageComposer
