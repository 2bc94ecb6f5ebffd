// Stands in for the header of the same name of macOS, for tests on Linux: of its structures only
// what the program reads, and the numbers as they are there.
#pragma once

#include <netinet/in.h>
#include <sys/types.h>

#include <cstdint>

constexpr std::uint32_t PROC_ALL_PIDS = 1;
constexpr int PROC_PIDLISTFDS = 1;
constexpr int PROC_PIDTBSDINFO = 3;
constexpr int PROC_PIDFDVNODEPATHINFO = 2;
constexpr int PROC_PIDFDSOCKETINFO = 3;
constexpr std::uint32_t PROX_FDTYPE_VNODE = 1;
constexpr std::uint32_t PROX_FDTYPE_SOCKET = 2;
constexpr int SOCKINFO_IN = 1;
constexpr int SOCKINFO_TCP = 2;
constexpr std::uint8_t INI_IPV4 = 1;
constexpr std::uint8_t INI_IPV6 = 2;
constexpr int TSI_S_LISTEN = 1;
constexpr int TSI_S_ESTABLISHED = 4;
constexpr std::uint32_t PROC_PIDPATHINFO_MAXSIZE = 4096;
constexpr std::uint32_t FWRITE = 2;

struct proc_fdinfo {
    std::int32_t proc_fd;
    std::uint32_t proc_fdtype;
};

struct proc_bsdinfo {
    uid_t pbi_uid;
    std::uint64_t pbi_start_tvsec;
};

struct proc_fileinfo {
    std::uint32_t fi_openflags;
};

struct vinfo_stat {
    std::uint16_t vst_mode;
};

struct vnode_info {
    vinfo_stat vi_stat;
};

struct vnode_info_path {
    vnode_info vip_vi;
    char vip_path[1024];
};

struct vnode_fdinfowithpath {
    proc_fileinfo pfi;
    vnode_info_path pvip;
};

struct in4in6_addr {
    std::uint32_t i46a_pad32[3];
    in_addr i46a_addr4;
};

struct in_sockinfo {
    int insi_fport;  // both in the network's byte order
    int insi_lport;
    std::uint8_t insi_vflag;
    union {
        in4in6_addr ina_46;
        in6_addr ina_6;
    } insi_faddr, insi_laddr;
};

struct tcp_sockinfo {
    in_sockinfo tcpsi_ini;
    int tcpsi_state;
};

struct socket_info {
    int soi_kind;
    union {
        in_sockinfo pri_in;
        tcp_sockinfo pri_tcp;
    } soi_proto;
};

struct socket_fdinfo {
    proc_fileinfo pfi;
    socket_info psi;
};
