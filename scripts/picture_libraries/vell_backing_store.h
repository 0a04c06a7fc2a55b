// Where the JPEG library keeps coefficients that do not fit into memory. Its own file of the library
// (jpeg_memory.c) looks for one of these at client_data of a decompressor, and takes as much memory as
// max_memory_to_use says. Where client_data is null, all is kept in memory. It is to be set
// before jpeg_create_decompress, which leaves what it finds there.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// The functions are called from within the library: they return, and do not throw.
struct VellBackingStore {
    void* owner; // what `open` is called with
    // A store for so many bytes, null if there can be none. Several may be open at once.
    void* (*open)(void* owner, long long total_bytes);
    // Zero for failure. Only what was written is read.
    int (*read)(void* store, void* buffer, long long offset, long long bytes);
    int (*write)(void* store, const void* buffer, long long offset, long long bytes);
    void (*close)(void* store);
};

#ifdef __cplusplus
}
#endif
