// A module whose static object calls back as it is destroyed: after the library's, if this module
// was loaded before the library.

#ifdef _WIN32
#define MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#define MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

struct LateCaller {
    ~LateCaller() { call(); }
    void (*call)() = [] {};
} lateCaller;

}  // namespace

MODULE_EXPORT void callLate(void (*function)()) {
    lateCaller.call = function;
}
