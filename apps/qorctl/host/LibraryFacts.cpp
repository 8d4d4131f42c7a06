#include "host/LibraryFacts.h"

#include <dlfcn.h>
#include <elf.h>
#include <fmt/format.h>
#include <link.h>

#include <cstdint>
#include <cstring>
#include <string_view>

namespace qorctl {
namespace {

constexpr ElfW(Word) VERSION_NOTE = 1;  // of the name "qor"

struct CSearch {
    ElfW(Addr) address;
    CLibraryFacts facts;
};

ElfW(Addr) RoundUp(ElfW(Addr) size, ElfW(Addr) alignment) {
    return (size + alignment - 1) / alignment * alignment;
}

std::string Hexadecimal(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes) {
        digits += fmt::format("{:02x}", static_cast<unsigned char>(byte));
    }
    return digits;
}

void TakeNote(std::string_view name, ElfW(Word) type, std::string_view content,
              CLibraryFacts& facts) {
    if (name == std::string_view("GNU\0", 4) && type == NT_GNU_BUILD_ID) {
        facts.buildId = Hexadecimal(content);
    } else if (name == std::string_view("qor\0", 4) && type == VERSION_NOTE) {
        facts.version = content.substr(0, content.find('\0'));
    }
}

void ReadNotes(const char* begin, ElfW(Addr) size, ElfW(Addr) alignment, CLibraryFacts& facts) {
    for (ElfW(Addr) at = 0; at + sizeof(ElfW(Nhdr)) <= size;) {
        ElfW(Nhdr) head = {};
        std::memcpy(&head, begin + at, sizeof(head));
        const ElfW(Addr) name = at + sizeof(head);
        const ElfW(Addr) content = RoundUp(name + head.n_namesz, alignment);
        if (content + head.n_descsz > size) {
            return;
        }
        TakeNote({begin + name, head.n_namesz}, head.n_type, {begin + content, head.n_descsz},
                 facts);
        at = RoundUp(content + head.n_descsz, alignment);
    }
}

bool Contains(const dl_phdr_info& object, ElfW(Addr) address) {
    for (ElfW(Half) i = 0; i < object.dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = object.dlpi_phdr[i];
        const ElfW(Addr) begin = object.dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_LOAD && address >= begin && address - begin < segment.p_memsz) {
            return true;
        }
    }
    return false;
}

int VisitObject(dl_phdr_info* object, size_t, void* data) {
    auto& search = *static_cast<CSearch*>(data);
    if (!Contains(*object, search.address)) {
        return 0;
    }
    for (ElfW(Half) i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = object->dlpi_phdr[i];
        if (segment.p_type == PT_NOTE) {
            // The loader tells addresses as numbers. NOLINTNEXTLINE(performance-no-int-to-ptr)
            const auto* notes = reinterpret_cast<const char*>(object->dlpi_addr + segment.p_vaddr);
            ReadNotes(notes, segment.p_memsz, segment.p_align == 8 ? 8 : 4, search.facts);
        }
    }
    return 1;
}

}  // namespace

CLibraryFacts FactsOfLibraryAt(const void* address) {
    Dl_info info = {};
    if (address == nullptr || dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    CSearch search = {reinterpret_cast<ElfW(Addr)>(address), {}};
    dl_iterate_phdr(VisitObject, &search);
    search.facts.path = info.dli_fname;
    return search.facts;
}

}  // namespace qorctl
