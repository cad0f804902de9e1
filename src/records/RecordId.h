#pragma once

#include <QtGlobal>

// A record's identity in the store: the row id, from 1 on and never reused. 0 means "not stored yet"
// for a record's own id, and "absent" for a reference to another record.
using RecordId = qint64;
