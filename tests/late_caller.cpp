// A module whose static object calls back as it is destroyed: after the library's, if this module
// was loaded before the library.

namespace {

struct LateCaller {
    ~LateCaller() { call(); }
    void (*call)() = [] {};
} lateCaller;

}  // namespace

extern "C" void callLate(void (*function)()) {
    lateCaller.call = function;
}
