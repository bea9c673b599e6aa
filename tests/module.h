// Modules that are loaded at run time.

#ifndef LAPWING_TESTS_MODULE_H
#define LAPWING_TESTS_MODULE_H

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#ifdef _WIN32
using Module = HMODULE;
inline Module load(const char* path) {
    return LoadLibraryA(path);
}
inline bool unload(Module module) {
    return FreeLibrary(module) != 0;
}
inline void* findAddress(Module module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(module, name));
}
#else
using Module = void*;
inline Module load(const char* path) {
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}
inline bool unload(Module module) {
    return dlclose(module) == 0;
}
inline void* findAddress(Module module, const char* name) {
    return dlsym(module, name);
}
#endif

template <class Function>
Function* find(Module module, const char* name) {
    return reinterpret_cast<Function*>(findAddress(module, name));
}

#endif  // LAPWING_TESTS_MODULE_H
