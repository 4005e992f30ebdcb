// Placeholder translation unit until the module's classes land.
namespace { int kaBrowserModulePlaceholder = 0; }
