// SPDX-License-Identifier: MIT
// Included before a source, so that this machine's compiler takes what macOS would: the branches of
// __APPLE__, with declarations for what they call, and nothing that only Linux has. The headers
// come first, because they would not survive the rest.
#pragma once

#include <QtCore>
#include <QtNetwork>
#include <QtWidgets>

#include <arpa/inet.h>
#include <boost/beast/http/basic_parser.hpp>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <mutex>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <pwd.h>
#include <random>
#include <sched.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#define __APPLE__ 1
#undef __linux__

#define F_FULLFSYNC 51
#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000
#define RENAME_EXCL 0x0004
#define SO_NOSIGPIPE 0x1022
#define st_atimespec st_atim
#define st_mtimespec st_mtim
extern "C" int renamex_np(const char* from, const char* to, unsigned int flags);

extern "C" int nameOwnThread(const char* name);
#define pthread_setname_np nameOwnThread

#undef MSG_NOSIGNAL
#undef O_PATH
#undef O_TMPFILE
#undef SOCK_CLOEXEC
#undef SOCK_NONBLOCK
#pragma GCC poison O_PATH O_TMPFILE SOCK_CLOEXEC SOCK_NONBLOCK
#pragma GCC poison accept4 pipe2 dup3 renameat2 copy_file_range sendfile splice getrandom          \
    close_range
#pragma GCC poison epoll_create epoll_create1 epoll_ctl epoll_wait eventfd signalfd timerfd_create
#pragma GCC poison inotify_init inotify_init1 pidfd_open syscall prctl unshare mkostemps
#pragma GCC poison posix_spawn_file_actions_addclosefrom_np sigtimedwait sigwaitinfo ppoll         \
    pthread_tryjoin_np
#pragma GCC poison st_atim st_mtim execvpe get_current_dir_name program_invocation_name
