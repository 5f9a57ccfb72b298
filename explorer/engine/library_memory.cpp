#include "library_memory.h"

#include <link.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace explorer {

namespace {

using Area = std::pair<std::uintptr_t, std::uintptr_t>;  // begin and end

struct LibrarySearch {
    std::uintptr_t inside = 0;
    std::vector<Area> found;
    Area whole = {0, 0};
};

// The writable segments, without what the loader protects once it has done its work.
std::vector<Area> WritableAreasOf(const dl_phdr_info& info) {
    std::vector<Area> areas;
    Area guarded = {0, 0};
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info.dlpi_phdr[i];
        const std::uintptr_t begin = info.dlpi_addr + segment.p_vaddr;
        const Area area = {begin, begin + segment.p_memsz};
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_W) != 0) {
            areas.push_back(area);
        } else if (segment.p_type == PT_GNU_RELRO) {
            guarded = area;
        }
    }
    for (Area& area : areas) {
        if (guarded.first <= area.first && guarded.second > area.first) {
            area.first = std::min(guarded.second, area.second);
        }
    }
    return areas;
}

Area WholeOf(const dl_phdr_info& info) {
    Area whole = {UINTPTR_MAX, 0};
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info.dlpi_phdr[i];
        if (segment.p_type == PT_LOAD) {
            const std::uintptr_t begin = info.dlpi_addr + segment.p_vaddr;
            whole.first = std::min(whole.first, begin);
            whole.second = std::max(whole.second, begin + segment.p_memsz);
        }
    }
    return whole;
}

int Visit(dl_phdr_info* info, std::size_t, void* data) {
    auto* search = static_cast<LibrarySearch*>(data);
    const bool isIt = std::any_of(
        info->dlpi_phdr, info->dlpi_phdr + info->dlpi_phnum, [&](const ElfW(Phdr) & segment) {
            const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
            return segment.p_type == PT_LOAD && search->inside >= begin &&
                   search->inside < begin + segment.p_memsz;
        });
    if (isIt) {
        search->found = WritableAreasOf(*info);
        search->whole = WholeOf(*info);
    }
    return isIt ? 1 : 0;
}

std::int32_t WordAt(const std::string& bytes, std::size_t at) {
    std::int32_t word = 0;
    std::memcpy(&word, bytes.data() + at, std::min(sizeof word, bytes.size() - at));
    return word;
}

}  // namespace

namespace {

// Byte by byte, and past the gaps between variables, which a sanitizer guards.
__attribute__((no_sanitize("address"))) void AppendMemory(std::string* to, const char* from,
                                                          std::size_t size) {
    const std::size_t before = to->size();
    to->resize(before + size);
    char* const place = to->data() + before;
    const volatile char* const memory = from;
    for (std::size_t i = 0; i < size; ++i) {
        place[i] = memory[i];
    }
}

}  // namespace

std::vector<std::pair<char*, std::size_t>> WritableAreasAround(const void* inside) {
    LibrarySearch search = {reinterpret_cast<std::uintptr_t>(inside), {}};
    dl_iterate_phdr(Visit, &search);
    std::vector<std::pair<char*, std::size_t>> areas;
    for (const auto& [begin, end] : search.found) {
        const std::uintptr_t aligned = begin / sizeof(void*) * sizeof(void*);
        areas.emplace_back(std::bit_cast<char*>(aligned), end - aligned);
    }
    return areas;
}

std::pair<std::uintptr_t, std::uintptr_t> RangeAround(const void* inside) {
    LibrarySearch search = {reinterpret_cast<std::uintptr_t>(inside), {}};
    dl_iterate_phdr(Visit, &search);
    return search.whole;
}

LibraryMemory::LibraryMemory(const void* inside) : areas_(WritableAreasAround(inside)) {
    IsAsBefore();
}

bool LibraryMemory::IsAsBefore(int above, int count) {
    std::string now;
    for (const auto& [begin, size] : areas_) {
        AppendMemory(&now, begin, size);
    }
    bool same = now.size() == before_.size();
    const bool isEqual = now == before_;  // nearly always, and much faster to find out
    for (std::size_t at = 0; !isEqual && same && at < now.size(); at += sizeof(std::int32_t)) {
        const std::int32_t word = WordAt(now, at);
        const std::int32_t old = WordAt(before_, at);
        same = word == old || (old == 0 && word > above && word <= above + count);
    }
    before_ = std::move(now);
    return same;
}

}  // namespace explorer
