// A library without an entry function that needs another extension, which has one.

extern "C" {
void quorvanta_extension_init();

__attribute__((visibility("default"))) void callBorrowedEntry() { quorvanta_extension_init(); }
}
