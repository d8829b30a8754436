// OrdersDocument.h - the benchmark input shared by the benchmark programs: the orders
// document made by examples/orders/gen_orders.py, generated once into /tmp and reused.
#ifndef QZXML_BENCH_ORDERSDOCUMENT_H
#define QZXML_BENCH_ORDERSDOCUMENT_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace QzBench {

// The path of the orders document with `orderCount` orders (12500 give about 10 MB).
// QZXML_BENCH_ORDERS may name another document. Exits the program when it cannot be made.
inline std::string OrdersDocumentPath(int orderCount) {
    if (const char* given = std::getenv("QZXML_BENCH_ORDERS"))
        return given;
    const std::string path = "/tmp/qzxml_bench_orders_" + std::to_string(orderCount) + ".xml";
    if (FILE* file = std::fopen(path.c_str(), "rb")) {
        std::fclose(file);
        return path;
    }
    const std::string command = "python3 " QZXML_BENCH_DIR "/../examples/orders/gen_orders.py " +
                                std::to_string(orderCount) + " " + path;
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "cannot generate %s\n", path.c_str());
        std::exit(1);
    }
    return path;
}

// The whole content of a file. Exits the program when it cannot be read.
inline std::vector<unsigned char> ReadFileBytes(const std::string& path) {
    std::vector<unsigned char> data;
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        std::exit(1);
    }
    unsigned char buffer[65536];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        data.insert(data.end(), buffer, buffer + n);
    std::fclose(file);
    return data;
}

} // namespace QzBench

#endif
