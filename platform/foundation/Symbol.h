#ifndef PLATFORM_FOUNDATION_SYMBOL_H
#define PLATFORM_FOUNDATION_SYMBOL_H

/* Stands behind the declaration of each function of the platform library for C: programs then
 * import it as searchsystem_NAME, so that no function NAME of the host or of another of its
 * libraries can take its place. The library exports the plain name, too, for dlsym and for
 * languages that read no headers. */
#if defined(__GNUC__)
#define SEARCHSYSTEM_SYMBOL(name) __asm__("searchsystem_" #name)
#else
#define SEARCHSYSTEM_SYMBOL(name)
#endif

#endif
