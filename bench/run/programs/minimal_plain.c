/* The peer of minimal_cobol: a process that only starts and ends. */
int main(void) {
    return 0;
}
