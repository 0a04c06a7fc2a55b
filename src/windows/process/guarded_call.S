# void guarded_call( void (*function)( void* ), void* argument )
# Windows x64 calling convention: rcx function, rdx argument. The frame carries an exception handler
# in its unwind information (Microsoft x64 exception handling, UNW_FLAG_EHANDLER).
    .text
    .globl guarded_call
    .def guarded_call; .scl 2; .type 32; .endef
    .seh_proc guarded_call
guarded_call:
    pushq %rbp
    .seh_pushreg %rbp
    movq %rsp, %rbp
    .seh_setframe %rbp, 0
    subq $32, %rsp
    .seh_stackalloc 32
    .seh_handler guarded_call_exception, @except
    .seh_endprologue
    movq %rcx, %rax
    movq %rdx, %rcx
    call *%rax
    nop
    addq $32, %rsp
    popq %rbp
    ret
    .seh_endproc
