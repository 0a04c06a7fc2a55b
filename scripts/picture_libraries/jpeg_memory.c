// The part of the JPEG library's memory manager that its makers leave to the system (jmemsys.h):
// memory from the C library, up to the limit of the decompressor, and behind that limit the store
// that its client provides. Compiled into the library instead of the file that has no store.
#define JPEG_INTERNALS
#include "jinclude.h"
#include "jpeglib.h"

#include "jmemsys.h"
#include "jerror.h"
#include "vell_backing_store.h"

static struct VellBackingStore* client_store(j_common_ptr cinfo) {
    return (struct VellBackingStore*)cinfo->client_data;
}

// The library's structure has room for a file of the C library. A store takes its place.
static void* opened_store(backing_store_ptr info) {
    return (void*)info->temp_file;
}

GLOBAL(void*) jpeg_get_small(j_common_ptr cinfo, size_t size) {
    (void)cinfo;
    return malloc(size);
}

GLOBAL(void) jpeg_free_small(j_common_ptr cinfo, void* object, size_t size) {
    (void)cinfo;
    (void)size;
    free(object);
}

GLOBAL(void*) jpeg_get_large(j_common_ptr cinfo, size_t size) {
    return jpeg_get_small(cinfo, size);
}

GLOBAL(void) jpeg_free_large(j_common_ptr cinfo, void* object, size_t size) {
    jpeg_free_small(cinfo, object, size);
}

GLOBAL(size_t)
jpeg_mem_available(j_common_ptr cinfo, size_t min_bytes_needed, size_t max_bytes_needed,
                   size_t already_allocated) {
    (void)min_bytes_needed;
    if (!client_store(cinfo))
        return max_bytes_needed;
    if (cinfo->mem->max_memory_to_use <= 0)
        return 0;
    const size_t limit = (size_t)cinfo->mem->max_memory_to_use;
    return limit > already_allocated ? limit - already_allocated : 0;
}

static void read_store(j_common_ptr cinfo, backing_store_ptr info, void* buffer, long long offset,
                       long long bytes) {
    if (!client_store(cinfo)->read(opened_store(info), buffer, offset, bytes))
        ERREXIT(cinfo, JERR_TFILE_READ);
}

static void write_store(j_common_ptr cinfo, backing_store_ptr info, void* buffer, long long offset,
                        long long bytes) {
    if (!client_store(cinfo)->write(opened_store(info), buffer, offset, bytes))
        ERREXIT(cinfo, JERR_TFILE_WRITE);
}

static void close_store(j_common_ptr cinfo, backing_store_ptr info) {
    client_store(cinfo)->close(opened_store(info));
}

GLOBAL(void)
jpeg_open_backing_store(j_common_ptr cinfo, backing_store_ptr info, long long total_bytes_needed) {
    struct VellBackingStore* client = client_store(cinfo);
    void* store = client ? client->open(client->owner, total_bytes_needed) : NULL;
    if (!store)
        ERREXITS(cinfo, JERR_TFILE_CREATE, "");
    info->temp_file = (FILE*)store;
    info->read_backing_store = read_store;
    info->write_backing_store = write_store;
    info->close_backing_store = close_store;
}

GLOBAL(long long) jpeg_mem_init(j_common_ptr cinfo) {
    (void)cinfo;
    return 0;
}

GLOBAL(void) jpeg_mem_term(j_common_ptr cinfo) {
    (void)cinfo;
}
