// A library that cannot be loaded: nothing has the function that it calls.

extern "C" void functionThatNobodyHas();

extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init() { functionThatNobodyHas(); }
