#include "core/workspace/ResultFetchNative.h"

#include <dlfcn.h>

void *ResultFetchNative::loadedSymbol(const char *library, const char *symbol)
{
    void *handle = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
    if (!handle)
        return nullptr;
    void *address = dlsym(handle, symbol);
    dlclose(handle); // drops only the reference RTLD_NOLOAD took; the driver keeps its own
    return address;
}
