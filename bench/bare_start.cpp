// Nothing: what a program takes that only has the shared libraries of backup_sign loaded.

int main() {}
