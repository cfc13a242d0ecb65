#pragma once

// Functions of a shared library that the program does not link but looks up when one is first
// called, so that starting the program does not load the library and what it depends on. Each file
// that names such a library defines the functions it uses, under their own names, with
// ZAREK_ON_DEMAND; the library is opened once, by its versioned file name (its package is a
// dependency of the program's package). A library or function that cannot be found ends the
// process with its name: the package guarantees both.

namespace zarek {

void *onDemandFunction(const char *library, const char *name);

}

#define ZAREK_ON_DEMAND(library, Result, name, Parameters, arguments)                                              \
    Result name Parameters                                                                                         \
    {                                                                                                              \
        static const auto call = reinterpret_cast<Result(*) Parameters>(zarek::onDemandFunction(library, #name));  \
        return call arguments;                                                                                     \
    }
