// SPDX-License-Identifier: MIT
// Asks for the time and goes on where programs begin, with the registers that the C library is given there.

    .bss
    .balign 16
    .globl orvanta_bench_executed
orvanta_bench_executed:
    .zero 16

    .text
    .globl orvanta_bench_entry
orvanta_bench_entry:
#if defined(__x86_64__)
    mov $228, %eax // clock_gettime
    mov $1, %edi   // CLOCK_MONOTONIC
    lea orvanta_bench_executed(%rip), %rsi
    syscall
    jmp _start
#elif defined(__aarch64__)
    mov x8, #113 // clock_gettime
    mov x9, x0
    mov x0, #1 // CLOCK_MONOTONIC
    adrp x1, orvanta_bench_executed
    add x1, x1, :lo12:orvanta_bench_executed
    svc #0
    mov x0, x9
    b _start
#endif

    .section .note.GNU-stack, "", %progbits
