// The version manifest, a ZIP archive in a section of its own that MATLAB looks for in the module file.
//
// On ELF the assembler includes it here. On Mach-O the linker makes the section:
// -Wl,-sectcreate,__TEXT,us_resources,<archive>.
#if defined(__ELF__)
__asm__(
    ".pushsection us_resources,\"a\"\n"
    ".incbin \"" KESTO_MANIFEST_ARCHIVE
    "\"\n"
    ".popsection\n");
#endif
