#include "WorkingSet.h"

#include <QtGlobal>

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {
// Code segments only: other pages may have been changed by relocation and would be lost.
int releaseCode(dl_phdr_info *library, size_t, void *)
{
    const auto page = static_cast<quintptr>(::sysconf(_SC_PAGESIZE));
    for (int i = 0; i < library->dlpi_phnum; ++i) {
        const auto &segment = library->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD || segment.p_flags != (PF_R | PF_X))
            continue;
        const quintptr begin = (library->dlpi_addr + segment.p_vaddr) / page * page;
        const quintptr end = library->dlpi_addr + segment.p_vaddr + segment.p_filesz;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader reports addresses as integers
        ::madvise(reinterpret_cast<void *>(begin), end - begin, MADV_DONTNEED);
    }
    return 0;
}
} // namespace

void trimWorkingSet()
{
    ::malloc_trim(0);
    ::dl_iterate_phdr(releaseCode, nullptr);
}
