#include "ScrollMatch.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace zelmor::service::capture {

namespace {

constexpr int kStripeWidth = 64;
constexpr int kMaxStripes = 8;
// Fewer agreeing pieces than this is a coincidence, not a match.
constexpr int kMinVotes = 3;
// Displacements with the most votes that are checked against all shared rows.
constexpr size_t kCandidates = 4;
// Pieces that occur once per frame; fewer leave nothing to tell a leap from a blank page.
constexpr int kMinDistinct = 12;
// A row that differs in no more pixels than this is the same row under a caret or a scroll
// bar's thumb.
constexpr int kFewPixels = 8;
// Shared rows may differ in more than that in this share of them: a tooltip, a hover.
constexpr int kMaxMismatchPercent = 10;
// A change confined to this share of the height is in place (a caret, a clock), not a scroll.
constexpr int kLocalChangeShare = 8;

using Key = std::pair<quint64, int>; // a piece's hash and its row

quint64 mix(quint64 h)
{
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdULL;
    h ^= h >> 33;
    return h;
}

// The pieces of one stripe in the rows [top, bottom) that are not flat and occur once.
std::vector<Key> uniquePieces(const FrameRows& rows, int stripe, int top, int bottom)
{
    std::vector<Key> keys;
    keys.reserve(size_t(std::max(0, bottom - top)));
    for (int row = top; row < bottom; ++row)
        if (!rows.flat(row, stripe)) keys.emplace_back(rows.cell(row, stripe), row);
    std::sort(keys.begin(), keys.end());
    std::vector<Key> unique;
    unique.reserve(keys.size());
    for (size_t i = 0; i < keys.size(); ++i) {
        const bool repeated = (i > 0 && keys[i - 1].first == keys[i].first) ||
                              (i + 1 < keys.size() && keys[i + 1].first == keys[i].first);
        if (!repeated) unique.push_back(keys[i]);
    }
    return unique;
}

struct Ballot
{
    std::vector<int> votes; // by displacement + height
    int distinctReference = 0;
    int distinctCurrent = 0;
};

// Every piece found once in each frame votes for the distance between its two rows.
Ballot vote(const FrameRows& reference, const FrameRows& current, int top, int bottom)
{
    const int height = current.height();
    Ballot ballot;
    ballot.votes.assign(size_t(2 * height + 1), 0);
    for (int stripe = 0; stripe < current.stripes(); ++stripe) {
        const std::vector<Key> before = uniquePieces(reference, stripe, top, bottom);
        const std::vector<Key> after = uniquePieces(current, stripe, top, bottom);
        ballot.distinctReference += int(before.size());
        ballot.distinctCurrent += int(after.size());
        auto b = before.begin();
        for (const Key& piece : after) {
            while (b != before.end() && b->first < piece.first)
                ++b;
            if (b != before.end() && b->first == piece.first)
                ++ballot.votes[size_t(b->second - piece.second + height)];
        }
    }
    return ballot;
}

// Whether nearly all rows with something on them that the two frames share when moved by
// `rows` are the same, but for a few pixels.
bool sharedRowsAgree(const FrameRows& reference, const FrameRows& current, int top, int bottom,
                     int rows)
{
    int compared = 0;
    int differing = 0;
    for (int row = std::max(top, top - rows); row < std::min(bottom, bottom - rows); ++row) {
        bool blank = true;
        int pixels = 0;
        for (int stripe = 0; stripe < current.stripes(); ++stripe) {
            blank = blank && current.flat(row, stripe) && reference.flat(row + rows, stripe);
            if (pixels <= kFewPixels &&
                current.cell(row, stripe) != reference.cell(row + rows, stripe))
                pixels += current.differingPixels(row, stripe, reference, row + rows,
                                                  kFewPixels + 1 - pixels);
        }
        if (blank && pixels == 0) continue;
        ++compared;
        if (pixels > kFewPixels) ++differing;
    }
    return compared > 0 && differing * 100 <= compared * kMaxMismatchPercent;
}

// The most voted displacements whose shared rows agree: one is the answer, several mean that
// the page repeats itself too much to tell.
std::vector<int> agreeingCandidates(const Ballot& ballot, const FrameRows& reference,
                                    const FrameRows& current, int top, int bottom)
{
    const int height = current.height();
    std::vector<std::pair<int, int>> ranked; // votes, displacement
    for (size_t i = 0; i < ballot.votes.size(); ++i)
        if (ballot.votes[i] >= kMinVotes) ranked.emplace_back(ballot.votes[i], int(i) - height);
    const size_t tried = std::min<size_t>(ranked.size(), kCandidates);
    std::partial_sort(ranked.begin(), ranked.begin() + tried, ranked.end(), std::greater<>());
    std::vector<int> agreeing;
    for (size_t i = 0; i < tried; ++i)
        if (sharedRowsAgree(reference, current, top, bottom, ranked[i].second))
            agreeing.push_back(ranked[i].second);
    return agreeing;
}

} // namespace

FrameRows::FrameRows(const QImage& frame, int width)
    : m_frame(frame), m_height(frame.height()), m_width(std::clamp(width, 0, frame.width())),
      m_stripes(std::clamp(m_width / kStripeWidth, 1, kMaxStripes))
{
    m_cells.resize(size_t(m_height) * size_t(m_stripes));
    m_flat.resize(m_cells.size());
    for (int y = 0; y < m_height; ++y) {
        const auto* line = reinterpret_cast<const quint32*>(frame.constScanLine(y));
        for (int s = 0; s < m_stripes; ++s) {
            const int from = s * m_width / m_stripes;
            const int to = (s + 1) * m_width / m_stripes;
            quint64 h = quint64(to - from) * 0x9e3779b97f4a7c15ULL;
            bool flat = true;
            for (int x = from; x < to; ++x) {
                h = (h ^ line[x]) * 0x100000001b3ULL;
                flat = flat && line[x] == line[from];
            }
            m_cells[size_t(y * m_stripes + s)] = mix(h);
            m_flat[size_t(y * m_stripes + s)] = flat;
        }
    }
}

bool FrameRows::sameRow(int row, const FrameRows& other, int otherRow) const
{
    return std::equal(m_cells.begin() + row * m_stripes, m_cells.begin() + (row + 1) * m_stripes,
                      other.m_cells.begin() + otherRow * m_stripes);
}

int FrameRows::differingPixels(int row, int stripe, const FrameRows& other, int otherRow,
                               int enough) const
{
    const auto* mine = reinterpret_cast<const quint32*>(m_frame.constScanLine(row));
    const auto* theirs = reinterpret_cast<const quint32*>(other.m_frame.constScanLine(otherRow));
    int count = 0;
    for (int x = stripe * m_width / m_stripes; x < (stripe + 1) * m_width / m_stripes; ++x)
        if (mine[x] != theirs[x] && ++count >= enough) break;
    return count;
}

Displacement findDisplacement(const FrameRows& reference, const FrameRows& current)
{
    Displacement found;
    const int height = current.height();
    if (height != reference.height() || current.width() != reference.width() || height < 1)
        return found;
    int top = 0;
    while (top < height && current.sameRow(top, reference, top))
        ++top;
    if (top == height) {
        found.kind = Displacement::Still;
        return found;
    }
    int bottom = height;
    while (current.sameRow(bottom - 1, reference, bottom - 1))
        --bottom;
    found.headerRows = top;
    found.footerRows = height - bottom;

    const Ballot ballot = vote(reference, current, top, bottom);
    const std::vector<int> agreeing = agreeingCandidates(ballot, reference, current, top, bottom);
    if (agreeing.size() == 1) {
        found.kind = agreeing.front() == 0 ? Displacement::Still : Displacement::Moved;
        found.rows = agreeing.front();
    } else if (agreeing.empty() && (bottom - top) * kLocalChangeShare <= height) {
        found.kind = Displacement::Still;
    } else if (agreeing.empty() && ballot.distinctReference >= kMinDistinct &&
               ballot.distinctCurrent >= kMinDistinct) {
        found.kind = Displacement::TooFast;
    }
    return found;
}

} // namespace zelmor::service::capture
