/* Group 8: one AT command to the modem's character device.
 *
 * The main thread writes the command through the system's shell; a thread beside it would read the answer, but nothing
 * opens the channel for it, so it says so and ends. */
#include <atomic>

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "velmor_rbk_groups.h"
#include "velmor_utils_cmn.h"

#define AT_DEVICE      "/dev/smd8"
#define AT_CMD_LEN_MAX 100  // characters
#define AT_CMD_SIZE    105  // the working copy, bytes; the command ends at AT_CMD_LEN_MAX
#define AT_SHELL_SIZE  501  // the shell's line, bytes

/* State: one command in the process's life, shared by the main and the receive thread without a lock. */
static int32_t              g_at_serial_fd;  // the AT channel; meant to stay 0, nothing opens it
static uint8_t              g_at_rsp_buf[512];
static std::atomic<int32_t> g_at_rsp_done;  // set by the receive thread, polled by the main thread

// ---- The receive thread ----

static void *velmor_test_at_cmd_receive(void *argument)
{
    (void)argument;
    LOG(2, "The thread to receive data from serial is started");
    if (g_at_serial_fd <= 0) {
        LOG(1, "The at channel is not opened, g_at_serial_fd %d", g_at_serial_fd);
    } else {
        const ssize_t rsp_len = read(g_at_serial_fd, g_at_rsp_buf, sizeof g_at_rsp_buf - 1);
        if (rsp_len > 0) {
            g_at_rsp_buf[rsp_len] = 0;
            LOG(2, "Receive the AT reponse: len(%d)", static_cast<int>(rsp_len));
            LOG(2, "%s", reinterpret_cast<const char *>(g_at_rsp_buf));
        } else {
            LOG(1, "Failed to receive bytes from server");
        }
    }
    g_at_rsp_done.store(1, std::memory_order_release);  // the channel is the main thread's again
    return nullptr;
}

// ---- The send ----

static void velmor_test_at_cmd_send(const char *command)
{
    // The command stands in the line as it was typed, so that the shell sees a `$` or a backquote in it: meant.
    char line[AT_SHELL_SIZE] = {};
    snprintf(line, sizeof line, "%s%s%s%s", "echo \"", command, "\r\" > ", AT_DEVICE);
    LOG(2, "at shell cmd: %s", line);

    const int ret_sys = system(line);
    LOG(2, "echo, ret_sys: %d", ret_sys);
    if (ret_sys != 0) {
        LOG(1, "Fail to send at shell cmd");
    } else {
        LOG(2, "Success to send at shell cmd");
    }
}

// ---- The group ----

void velmor_test_at_cmd_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_AT) return;
    // clang-format off
    LOG(8, "%d: velmor at command test", RBK_GROUP_AT);
    LOG(8, "   rbk %d atcmd_cxt               /* atcmd_cxt: at command context */", RBK_GROUP_AT);
    LOG(8, "                                    the len of atcmd can not > %d", AT_CMD_LEN_MAX);
    // clang-format on
}

int velmor_test_at_cmd_do(int argc, char *argv[])
{
    bool help_wanted = true;
    if (argc != 3) {
        LOG(1, "note: The number of inputs should be 2, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_AT) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_AT);
    } else if (strlen(argv[2]) > AT_CMD_LEN_MAX) {
        LOG(1, "note: the second parameters length should <= %d, Pls refer to the following cmd:", AT_CMD_LEN_MAX);
    } else {
        char      command[AT_CMD_SIZE] = {};
        const int scanned = sscanf(argv[2], "%104s\r", command);  // up to the first blank
        command[AT_CMD_LEN_MAX] = 0;
        LOG(2, "At cmd you input: sscanf(%d), len (%d), %s", scanned, static_cast<int>(strlen(command)), command);

        LOG(2, "Will create a thread to receive data from serial");
        pthread_t receiver;
        if (pthread_create(&receiver, nullptr, velmor_test_at_cmd_receive, nullptr) != 0) {
            LOG(1, "Fail to create a thread");
        } else {
            velmor_test_at_cmd_send(command);
            // No limit: the receive thread alone ends the wait, and mostly has before the first look.
            while (g_at_rsp_done.load(std::memory_order_acquire) == 0) sleep(1);
            help_wanted = false;
        }
    }

    if (g_at_serial_fd >= 1) {
        LOG(2, "Will close channel: %s", AT_DEVICE);
        close(g_at_serial_fd);
        g_at_serial_fd = 0;
    }
    g_at_rsp_done.store(0, std::memory_order_relaxed);
    if (help_wanted) show_help(RBK_GROUP_AT);
    return 0;
}
