#include "postgres_library.h"

#include "places.h"

#include <string>

#ifdef _WIN32
#include <windows.h>

#include <system_error>
#else
#include <dlfcn.h>
#endif

namespace command {
namespace {

[[noreturn]] void refuse(const std::string& reason) {
#ifdef _WIN32
    const char* const wanted = "libpq.dll must be beside lapwing.exe or in a folder of PATH";
#else
    const char* const wanted = "install Debian's package libpq5, or what has libpq.so.5 elsewhere";
#endif
    throw Failure(std::string("databases need libpq: ") + wanted + " (" + reason + ")");
}

// It stays loaded: what it uses may run until the process ends.
#ifdef _WIN32
using Module = HMODULE;

Module open() {
    SetDllDirectoryW(L"");  // Not from the current folder, which may be anybody's.
    const Module module = LoadLibraryW(L"libpq.dll");
    if (module == nullptr) {
        const auto code = static_cast<int>(GetLastError());
        refuse(std::error_code(code, std::system_category()).message());
    }
    return module;
}

void* find(Module module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(module, name));
}
#else
using Module = void*;

Module open() {
    void* const module = dlopen("libpq.so.5", RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        refuse("libpq.so.5 cannot be loaded");
    }
    return module;
}

void* find(Module module, const char* name) {
    return dlsym(module, name);
}
#endif

template <class Function>
void load(Module module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(find(module, name));
    if (function == nullptr) {
        refuse(std::string("it has no ") + name);
    }
}

PostgresLibrary loadLibrary() {
    auto* const module = open();
    PostgresLibrary library{};
#define LOAD(name) load(module, #name, library.name)
    LOAD(PQconninfoParse);
    LOAD(PQconninfoFree);
    LOAD(PQfreemem);
    LOAD(PQconnectStartParams);
    LOAD(PQreset);
    LOAD(PQfinish);
    LOAD(PQstatus);
    LOAD(PQerrorMessage);
    LOAD(PQsetNoticeProcessor);
    LOAD(PQexec);
    LOAD(PQsendQueryParams);
    LOAD(PQsetSingleRowMode);
    LOAD(PQgetResult);
    LOAD(PQputCopyData);
    LOAD(PQputCopyEnd);
    LOAD(PQresultStatus);
    LOAD(PQresultErrorField);
    LOAD(PQntuples);
    LOAD(PQgetisnull);
    LOAD(PQgetlength);
    LOAD(PQgetvalue);
    LOAD(PQclear);
#undef LOAD
    return library;
}

}  // namespace

const PostgresLibrary& postgresLibrary() {
    static const PostgresLibrary library = loadLibrary();
    return library;
}

}  // namespace command
