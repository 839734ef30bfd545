// A library that asks its process for a function which no host has.
extern "C" int NobodyHasThis(void);
extern "C" int TestPager(void) {
    return NobodyHasThis();
}
