# What the sanitizers are told, and the tests that always run under them. Sourced, not run; expects the repository as
# the working folder.

# The toolkit is not instrumented: its calls into libc are not judged, and tsan.supp names the rest.
export TSAN_OPTIONS="ignore_noninstrumented_modules=1 halt_on_error=1 second_deadlock_stack=1 suppressions=$PWD/tests/sanitizers/tsan.supp"
export ASAN_OPTIONS="detect_leaks=1 strict_string_checks=1 detect_stack_use_after_return=1"
export UBSAN_OPTIONS="print_stacktrace=1 halt_on_error=1"

# Tests of random interleavings between threads: what they look for shows best under a sanitizer.
interleaving_tests() {
    printf '%s\n' tst_completiongate tst_ticketinterleavings
}
