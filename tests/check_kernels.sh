#!/usr/bin/env bash
# check_kernels.sh OBJECT...: fails if a kernel's object file shares anything with others but the
# function that it is there for. The linker keeps one copy of what is shared, which may be made of
# instructions that the machine has not.
set -euo pipefail
kernels=0
for object in "$@"; do
    [[ $object =~ _kernel_[0-9]+\.cpp\.o ]] || continue
    kernels=$((kernels + 1))
    shared=$(nm -C --defined-only "$object" | grep -v ' [tr] ' | grep -vE ' T zeb::[a-zA-Z]+Kernel[0-9]+\(\)$' || true)
    if [[ $shared ]]; then
        echo "$object shares:" >&2
        echo "$shared" >&2
        exit 1
    fi
done
if ((kernels < 2)); then
    echo "check_kernels.sh: only $kernels kernels among $# files" >&2
    exit 1
fi
