// Under LeakSanitizer: Qt 5.15's offscreen platform never frees its screen, which leaks at
// every exit of a test that draws offscreen. Those leaks alone are let pass, found by the
// platform plugin in their allocation's whole stack (Qt has no frame pointers for the
// sanitizer's fast unwinder to follow); the plugins' and the tests' own leaks still fail.

extern "C" {

const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }

const char* __lsan_default_suppressions() { return "leak:libqoffscreen.so\n"; }

}
