#pragma once

#include <QUuid>

// A random (version 4) identity from the process's seeded generator. QUuid::createUuid asks the system's
// generator with a system call each time, which a run that makes several identities per message feels; these
// identities (boundaries, content and message identifiers, recipients of a plan) need no more than this.
QUuid uuidCasuale();
