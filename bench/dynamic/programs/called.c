/* What the benchmark calls: one routine under the names CALLED00 to CALLED63. */
__attribute__((used)) static int called(void) {
    return 1;
}

__asm__(".irp tens,0,1,2,3,4,5,6\n"
        ".irp ones,0,1,2,3,4,5,6,7,8,9\n"
        ".globl CALLED\\tens\\ones\n"
        ".type CALLED\\tens\\ones, @function\n"
        ".set CALLED\\tens\\ones, called\n"
        ".endr\n"
        ".endr");
