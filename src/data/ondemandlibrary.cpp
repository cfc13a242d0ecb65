#include "ondemandlibrary.h"

#include <QtGlobal>

#include <dlfcn.h>

namespace zarek {

void *onDemandFunction(const char *library, const char *name)
{
    // dlopen counts its openings; a library opened again is the one already loaded.
    void *handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    void *function = handle ? dlsym(handle, name) : nullptr;
    if (!function)
        qFatal("%s: %s not found: %s", library, name, dlerror());
    return function;
}

}
