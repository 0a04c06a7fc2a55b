# The archive of the encoding data, as it is.
    .section .rdata, "dr"
    .globl vell_encoding_data
    .globl vell_encoding_data_end
vell_encoding_data:
    .incbin VELL_ENCODING_DATA
vell_encoding_data_end:
