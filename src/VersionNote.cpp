// The version of the library that this file is linked into, as an ELF note of the name "qor" and
// the type 1. A note is no symbol: the list of exports stays what hosts rely on, and a tool finds
// the version in a file that it cannot load as well as in one that is loaded.
//
//     4 bytes  size of the name, with its zero
//     4 bytes  size of the version text, with its zero
//     4 bytes  type
//     name, then version text, each filled up to a multiple of 4 bytes
//
// Assembly, because a sanitizer would put its own bytes around a variable.
#define QOR_QUOTE_TEXT(text) #text
#define QOR_QUOTE(text) QOR_QUOTE_TEXT(text)

asm(".pushsection .note.qor, \"a\", %note\n"
    ".balign 4\n"
    ".long 2f - 1f\n"
    ".long 4f - 3f\n"
    ".long 1\n"
    "1: .asciz \"qor\"\n"
    "2: .balign 4\n"
    "3: .asciz \"" QOR_QUOTE(QOR_VERSION) "\"\n"
    "4: .balign 4\n"
    ".popsection\n");
