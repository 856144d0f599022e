// SPDX-License-Identifier: AGPL-3.0-or-later
// module_benchmarks: what the built module costs a host before the first sound: loading it, making an instance, opening the
// window, and memory.
int main() { return 0; }
