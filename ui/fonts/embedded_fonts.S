/* The UI font's two faces, taken from Debian's fonts-inter at build time (the paths come
   from the build as HALVERN_FONT_REGULAR and HALVERN_FONT_SEMIBOLD). */
    .section .rodata
    .balign 16
    .globl halvern_font_regular_begin
    .hidden halvern_font_regular_begin
halvern_font_regular_begin:
    .incbin HALVERN_FONT_REGULAR
    .globl halvern_font_regular_end
    .hidden halvern_font_regular_end
halvern_font_regular_end:
    .balign 16
    .globl halvern_font_semibold_begin
    .hidden halvern_font_semibold_begin
halvern_font_semibold_begin:
    .incbin HALVERN_FONT_SEMIBOLD
    .globl halvern_font_semibold_end
    .hidden halvern_font_semibold_end
halvern_font_semibold_end:
    .section .note.GNU-stack,"",@progbits
