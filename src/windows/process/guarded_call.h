// A call under structured exception handling, which the compiler itself does not offer. Windows
// only.
#pragma once

extern "C" {

// Calls `function( argument )`. A system exception (such as an access violation) that leaves the
// function is given to guarded_call_exception; C++ exceptions pass through as they would without
// the guard.
void guarded_call(void (*function)(void*), void* argument);
}
