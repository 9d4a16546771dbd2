// floor.cpp: turns an accounting log into a tab-separated report with the least work, as a baseline.
//   floor LOG > REPORT     one line per job record; a line of OIDs whenever the columns change
//   floor --cat LOG        only reads the file, 1 MiB at a time
//   floor --walk LOG       finds every tag and value, but decodes and writes no value
// Checks only bounds.  The report names each column by its OID.
#include "tests/bench/log.h"
#include <charconv>
#include <string>
#include <string_view>

class Output {
public:
    // Returns room for n bytes.  The calling function writes them and passes their end to advance().
    char *room(size_t n) {
        if (buf_.size() - used_ < n)
            buf_.resize(2 * buf_.size() + n);
        return buf_.data() + used_;
    }
    void advance(char *to) { used_ = to - buf_.data(); }
    void put(char c) { *room(1) = c, used_++; }
    void put(std::string_view s) { memcpy(room(s.size()), s.data(), s.size()), used_ += s.size(); }
    void startLine() { line_ = used_; }
    void insertBeforeLine(const std::string &s) {
        room(s.size());
        memmove(&buf_[line_ + s.size()], &buf_[line_], used_ - line_);
        memcpy(&buf_[line_], s.data(), s.size());
        used_ += s.size();
    }
    void flush(size_t above) {
        if (used_ <= above)
            return;
        for (size_t done = 0; done < used_;) {
            ssize_t n = write(1, buf_.data() + done, used_ - done);
            if (n < 0)
                fail("cannot write the report");
            done += n;
        }
        used_ = 0;
    }

private:
    std::vector<char> buf_ = std::vector<char>(chunk);
    size_t used_ = 0, line_ = 0;
};

static char *digits(char *p, uint32_t v, int width) {
    for (int i = width; i-- > 0; v /= 10)
        p[i] = char('0' + v % 10);
    return p + width;
}

static void writeValue(Output &out, uint32_t type, const char *v, size_t size) {
    if (type == String && size >= 4 && net(v) <= size - 4) {
        out.put({v + 4, net(v)});
    } else if (type == Time && size >= 36) {
        char *p = digits(out.room(19), net(v), 4);
        for (int i = 1; i < 6; i++)
            *p++ = " -- ::"[i], p = digits(p, net(v + 4 * i), 2);
        out.advance(p);
    } else if (size == 4) {
        char *p = out.room(11);
        out.advance(std::to_chars(p, p + 11, int32_t(net(v))).ptr);
    } else {
        out.put('*');
    }
}

static void report(Input &in, Output &out, bool writing) {
    std::vector<std::string> oids; // OIDs of the columns, each with its NUL
    for (uint32_t left = net(in.take(12) + 8); left-- > 0;)
        for (uint32_t values = native(in.take(tagSize)); values-- > 0;)
            in.take(native(in.take(4)));
    while (!in.atEnd()) {
        uint32_t count = net(in.take(12));
        bool changed = oids.size() != count;
        if (changed)
            oids.resize(count);
        out.startLine();
        for (auto &oid : oids) {
            const char *tag = in.take(tagSize);
            uint32_t values = native(tag), type = native(tag + 148);
            if (oid.empty() || memcmp(tag + 8, oid.data(), oid.size()) != 0) {
                oid.assign(tag + 8, strnlen(tag + 8, 136)), oid.push_back('\0');
                changed = true;
            }
            for (uint32_t i = 0; i < values; i++) {
                uint32_t size = native(in.take(4));
                const char *v = in.take(size);
                if (!writing)
                    continue;
                if (i > 0)
                    out.put(',');
                writeValue(out, type, v, size);
            }
            if (writing)
                out.put(&oid == &oids.back() ? '\n' : '\t');
        }
        if (changed && writing) {
            std::string names;
            for (auto &oid : oids)
                names += oid.c_str(), names += &oid == &oids.back() ? '\n' : '\t';
            out.insertBeforeLine(names);
        }
        out.flush(chunk / 2);
    }
    out.flush(0);
}

int main(int argc, char **argv) {
    std::string_view mode = argc == 3 ? argv[1] : "";
    if (argc < 2 || argc > 3 || (argc == 3 && mode != "--cat" && mode != "--walk"))
        fail("usage: floor [--cat|--walk] LOG");
    Input in(argv[argc - 1], mode == "--cat" ? 1 << 20 : chunk);
    Output out;
    if (mode == "--cat")
        while (!in.atEnd())
            in.skipBuffered();
    else
        report(in, out, mode != "--walk");
}
