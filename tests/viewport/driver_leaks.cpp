/// What drivers keep to the end of the process is not the leak that the sanitizer is to find. Software Mesa keeps
/// memory of its rasteriser's threads, now and then.
extern "C" char const* __lsan_default_suppressions();
extern "C" char const* __lsan_default_suppressions() {
    return "leak:_dri.so\n"
           "leak:libgallium\n"
           "leak:libEGL_mesa\n"
           "leak:libGLX_mesa\n";
}
