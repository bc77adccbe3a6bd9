// A stand-in companion module for the start-up relay tests.
extern "C" {
int gEnsureInitCalls = 0;
int gForceTermCalls = 0;
__attribute__((visibility("default"))) void DllEnsureInit() { ++gEnsureInitCalls; }
__attribute__((visibility("default"))) void DllForceTerm() { ++gForceTermCalls; }
}
