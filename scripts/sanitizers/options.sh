# Sourced by scripts/sanitize and scripts/fuzz: how the sanitizer runtimes
# behave in every instrumented program they start, and what they leave alone
# (the suppression files beside this one, one reason per line).
sanitizers=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

symbolizer=$(command -v llvm-symbolizer || command -v llvm-symbolizer-14 || true)
[ -z "$symbolizer" ] || export ASAN_SYMBOLIZER_PATH="$symbolizer"

# A bad access stops the program; so does undefined behaviour (the build
# makes it fatal too). Leaks are checked when a program ends. Returns of a
# function that left a pointer to its stack behind are caught as well.
export ASAN_OPTIONS="detect_leaks=1:halt_on_error=1:check_initialization_order=1:detect_stack_use_after_return=1:strict_init_order=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:suppressions=$sanitizers/ubsan.supp"
export LSAN_OPTIONS="suppressions=$sanitizers/lsan.supp:print_suppressions=0"
# Every race is reported, then the program fails at its end. What Qt and the
# other uninstrumented libraries do to memory inside themselves (through the
# C library's functions) is left out: their locks are invisible too, so only
# false reports would come of it; our code's every access is still checked.
# tsanhooks.cpp tells the sanitizer of the hand-overs it cannot see.
export TSAN_OPTIONS="suppressions=$sanitizers/tsan.supp:ignore_noninstrumented_modules=1:${symbolizer:+external_symbolizer_path=$symbolizer:}print_suppressions=0:second_deadlock_stack=1:history_size=4"
