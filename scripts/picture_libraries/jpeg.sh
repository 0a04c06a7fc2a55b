# The JPEG library as the plug-in has it, whatever it is built for. Expects to be sourced behind
# scripts/library_build.sh.

jpeg_options=(-DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DREQUIRE_SIMD=ON)

# SOURCE: makes work/source of it.
make_jpeg_source() {
    # scripts/jpeg.patch: coefficients that a small picture has no use for are passed over.
    cp -r "$1" "$work/source"
    patch -s -d "$work/source" -p1 <"$scripts/jpeg.patch"
    # With a memory manager of our own, which can put aside what does not fit into memory. A `long` of
    # Windows does not count the bytes of a large picture. What the user's environment says of the
    # library's memory is not read.
    cp "$scripts/picture_libraries/jpeg_memory.c" "$work/source/jmemnobs.c"
    cp "$scripts/picture_libraries/vell_backing_store.h" "$work/source"
    sed -Ei 's/\blong\b/long long/g' "$work/source/jmemsys.h" "$work/source/jmemmgr.c"
}

# Builds what is configured as work/jpeg, and installs it.
install_jpeg() {
    logged jpeg cmake --build "$work/jpeg" --target jpeg-static
    mkdir -p "$work/installed"/{include,lib}
    cp "$work/jpeg/libjpeg.a" "$work/installed/lib"
    cp "$work/jpeg/jconfig.h" "$work/source"/{jpeglib,jmorecfg,jerror,vell_backing_store}.h \
        "$work/installed/include"
}
