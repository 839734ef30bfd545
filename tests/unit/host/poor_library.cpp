// A library that lacks most of the functions of libPagerFwd.so.
extern "C" int AlarmFwdPager(void) {
    return 0;
}
