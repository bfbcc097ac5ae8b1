// What the sanitizers must let pass: an allocation that is refused is a case here, and threads and blocks that the shell
// leaves behind at its end are meant.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

extern "C" const char* __tsan_default_options()
{
    return "report_thread_leaks=0:allocator_may_return_null=1";
}

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:uim_power_up\n"
           "leak:uim_power_down\n"
           "leak:velmor_setSimType\n";
}

extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0";
}
