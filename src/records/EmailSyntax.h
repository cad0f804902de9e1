#pragma once

#include <QString>

// The one test of an address's form in the program.
bool isValidEmailSyntax(const QString& address);
