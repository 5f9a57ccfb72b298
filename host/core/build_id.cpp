#include "build_id.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>

namespace host {

namespace {

struct Search {
    ElfW(Addr) address = 0;  // where the library is loaded
    std::string id;
};

std::string ToHex(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return text;
}

// The id among the notes of a segment; empty when it is not there.
std::string IdIn(std::string_view notes, size_t alignment) {
    const auto padded = [&](size_t size) { return (size + alignment - 1) / alignment * alignment; };
    ElfW(Nhdr) note;
    while (notes.size() >= sizeof note) {
        std::memcpy(&note, notes.data(), sizeof note);
        const size_t body = padded(sizeof note + note.n_namesz);
        if (body + note.n_descsz > notes.size()) {
            return "";
        }
        const std::string_view name = notes.substr(sizeof note, note.n_namesz);
        if (note.n_type == NT_GNU_BUILD_ID &&
            name == std::string_view(ELF_NOTE_GNU, sizeof ELF_NOTE_GNU)) {
            return ToHex(notes.substr(body, note.n_descsz));
        }
        notes.remove_prefix(std::min(notes.size(), body + padded(note.n_descsz)));
    }
    return "";
}

int Visit(dl_phdr_info* info, size_t, void* data) {
    auto* search = static_cast<Search*>(data);
    if (info->dlpi_addr != search->address) {
        return 0;
    }
    for (int i = 0; i < info->dlpi_phnum && search->id.empty(); ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        if (segment.p_type == PT_NOTE) {
            const auto* begin = std::bit_cast<const char*>(info->dlpi_addr + segment.p_vaddr);
            search->id = IdIn({begin, segment.p_memsz}, std::max<size_t>(4, segment.p_align));
        }
    }
    return 1;
}

}  // namespace

std::string BuildIdOf(const std::string& file) {
    const std::string path = std::filesystem::absolute(file).string();
    const std::unique_ptr<void, int (*)(void*)> library(
        dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD), dlclose);
    const link_map* map = nullptr;
    if (!library || dlinfo(library.get(), RTLD_DI_LINKMAP, &map) != 0) {
        return "";
    }
    Search search;
    search.address = map->l_addr;
    dl_iterate_phdr(Visit, &search);
    return search.id;
}

}  // namespace host
