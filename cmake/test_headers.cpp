// What the precompiled headers of the test programs are compiled with: nothing of its own.
int main() {}
