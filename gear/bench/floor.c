/* The least that the 881's steady work can cost: a bare program that makes the same writes, sleeps
 * and reads on the port, writes files as large as the status files as often, looks at the same
 * files and starts the same shell line, and thinks about nothing. gear/bench/processor holds the
 * daemon against it, in the sandbox: it writes the daemon's own files.
 *
 *     floor DEVICE
 */
#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#define READ_SIZE 0x20000

static char buffer[READ_SIZE + 1];
static int port;

struct command {
    const char* text;
    unsigned wait; /* seconds */
    int every;     /* passes */
};

/* A pass of about five seconds; registration and identity come with their timers. */
static const struct command pass[] = {
    {"at^sysinfo", 0, 1},  {"at!getband?", 0, 1},
    {"AT*CNTI=0", 0, 1},   {"at+ecio?", 0, 1},
    {"at!gstatus?", 0, 1}, {"AT+CREG?", 0, 6},
    {"at+cnum", 0, 6},     {"AT+CGDCONT?", 0, 6},
    {"at!GSMINFO?", 2, 6}, {"AT+CMGL=\"REC UNREAD\"", 2, 3},
    {"AT+CMGD=0,1", 1, 3},
};
static const struct command behind_signal[] = {{"AT+CGDCONT?", 0, 1}, {"AT!ICCID?", 1, 1}};

static int take(void) {
    int waiting = 0;
    if (ioctl(port, FIONREAD, &waiting) < 0 || waiting == 0) return 0;
    return (int)read(port, buffer, READ_SIZE);
}

static void put(const char* text, size_t size) {
    if (write(port, text, size) < 0) _exit(1);
}

static void transact(const struct command* command) {
    take();
    put(command->text, strlen(command->text));
    usleep(20000);
    put("\r", 1);
    put("\n", 1);
    usleep(50000);
    if (command->wait > 0) sleep(command->wait);
    while (take() > 0) usleep(50000);
}

static void poll_signal(void) {
    char padded[80] = "AT+CSQ";
    put(padded, sizeof(padded));
    usleep(20000);
    put("\r", 1);
    usleep(20000);
    put("\n", 1);
    sleep(1);
    usleep(200000);
    take();
}

static void look_at(const char* path) {
    struct stat status;
    (void)stat(path, &status);
}

static void read_file(const char* path) {
    int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    (void)read(fd, buffer, 1024);
    close(fd);
}

static void write_file(const char* path, size_t size) {
    int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return;
    if (write(fd, buffer, size) < 0) _exit(1);
    close(fd);
}

static void serve_spool(void) {
    DIR* spool;
    (void)system("mkdir -p /tmp/sms/send/ /tmp/sms/send_fail/");
    spool = opendir("/tmp/sms/send/");
    if (spool == NULL) return;
    while (readdir(spool) != NULL) {
    }
    closedir(spool);
}

static void publish(void) {
    write_file("/var/log/lightbar_chan_in", 5);
    write_file("/var/log/wireless.serialno", 16);
    write_file("/var/log/wireless.mdn", 11);
    write_file("/var/log/wireless.cardstats", 1800);
    look_at("/etc/kvt/wireless/cellmodem_provision_data.conf");
    look_at("/etc/kvt/wireless/cellmodem_ppp.conf");
}

int main(int argc, char** argv) {
    struct termios line;
    port = argc > 1 ? open(argv[1], O_RDWR | O_NOCTTY | O_NONBLOCK) : -1;
    if (port < 0) return 1;
    tcgetattr(port, &line);
    cfmakeraw(&line);
    tcsetattr(port, TCSANOW, &line);
    for (int n = 0;; ++n) {
        look_at("/etc/kvt/wireless/cellmodem_ppp.conf");
        for (size_t i = 0; i < sizeof(pass) / sizeof(pass[0]); ++i) {
            if (n % pass[i].every == 0) transact(&pass[i]);
        }
        if (n % 3 == 0) serve_spool();
        if (n % 6 == 0) write_file("/var/log/wirelessactivation_status", 9);
        poll_signal();
        write_file("/var/log/lightbar", 12);
        write_file("/var/log/lightbar_ecio_in", 5);
        for (size_t i = 0; i < sizeof(behind_signal) / sizeof(behind_signal[0]); ++i) {
            transact(&behind_signal[i]);
        }
        publish();
        sleep(2);
        read_file("/proc/uptime");
        read_file("/var/log/kvtinit.status");
    }
}
