#pragma once

#include <QString>

// The one test of an address's form in the program. Besides the shape (one "@", something before it, a
// domain with an inner point) it refuses whatever could smuggle text into an SMTP command or a header
// (angle brackets, the other RFC 5322 specials, blanks, control and invisible format characters) and a
// local part that isn't ASCII, which no server is obliged to take without SMTPUTF8.
bool isValidEmailSyntax(const QString& address);

// The address as it goes on the wire: a domain holding anything but ASCII in its IDNA ASCII form
// ("müller.de" becomes "xn--mller-kva.de"); the rest as given. Unchanged when the domain has no such form.
QString wireAddress(const QString& address);
