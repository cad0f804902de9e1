#include "import/FlatList.h"

#if defined(Q_OS_LINUX)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace CSVParser {

void prefault(void* from, qsizetype bytes) {
#if defined(Q_OS_LINUX) && defined(MADV_POPULATE_WRITE)
    static const auto page = quintptr(sysconf(_SC_PAGESIZE));
    const quintptr begin = quintptr(from) & ~(page - 1);
    const quintptr end = quintptr(from) + quintptr(bytes);
    // Pages that are already there are left as they are; a kernel before 5.14 refuses, and nothing is lost.
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#else
    Q_UNUSED(from);
    Q_UNUSED(bytes);
#endif
}

} // namespace CSVParser
