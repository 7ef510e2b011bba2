// lists.h -- the named lists that library entries are made of.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "base/words.h"

// A list of words for each entry, all in one pool: word j of entry e is pool word first[e] + j.
struct word_list {
    words pool;
    std::vector<int> first{0};  // [n entries + 1]

    int count(int e) const { return first[at(e) + 1] - first[at(e)]; }
    std::string_view word(int e, int j) const { return pool[first[at(e)] + j]; }
    int find(int e, std::string_view w) const {  // position in the entry's list, -1 if absent
        for (int j = 0; j < count(e); ++j)
            if (word(e, j) == w) return j;
        return -1;
    }
    void close_entry() { first.push_back(pool.size()); }
    static std::size_t at(int e) { return static_cast<std::size_t>(e); }
};

// The same with a default value for each word.
template <class T>
struct pair_list {
    word_list name;
    std::vector<T> dflt;  // [pool words]

    int count(int e) const { return name.count(e); }
    int find(int e, std::string_view w) const { return name.find(e, w); }
    std::string_view word(int e, int j) const { return name.word(e, j); }
    const T& value(int e, int j) const { return dflt[word_list::at(name.first[word_list::at(e)] + j)]; }
};

// Every list that an entry of any library can have; what a family lacks has no words. All lists have one (possibly
// empty) row for each entry.
struct library_lists {
    words entry;           // [n] names of the entries, in file order
    word_list node;        // terminals (electrical)
    word_list ind_node;    // sensed nodes
    word_list ind_branch;  // sensed branches
    word_list locv;        // local variables
    word_list aux;         // auxiliary unknowns
    word_list auxs;        // auxiliary unknowns of the start-up system
    word_list dgtl;        // digital nodes; of a digital element its inputs, then its outputs
    word_list vr;          // general variables
    word_list xvr;         // explicit variables; of an explicit block its inputs, then its outputs
    pair_list<int> iprm;
    pair_list<std::string> sprm;
    pair_list<double> rprm;
    pair_list<double> sv;  // start-up values, "stparms:"; of digital elements whole numbers
    pair_list<double> ig;  // first guesses, "igparms:"; as start-up values
    std::vector<int>
        n_input;  // [n] of digital elements and explicit blocks: how many of their nodes or variables are inputs
    // of explicit blocks that stand for a network, alone
    word_list cct;                         // its nodes, the first of the inputs
    pair_list<std::string> be_v;           // branch voltages as they are written: name, "a-b" or "a"
    word_list bev, cur;                    // their names; branch currents: "current", or one for each node
    std::vector<int> bev_plus, bev_minus;  // [bev words] node in cct; -1: the reference
    // of digital elements alone
    std::vector<int> n_logical;  // [n] numbers that an element keeps between its calls

    int n() const { return entry.size(); }
    int find(std::string_view name) const { return find_word_1(entry, name); }
    void close_rows() {  // gives every list that the newest entry did not fill its empty row
        const std::size_t n_first = static_cast<std::size_t>(n()) + 1;
        for (word_list* l : {&node, &ind_node, &ind_branch, &locv, &aux, &auxs, &dgtl, &vr, &xvr, &iprm.name,
                             &sprm.name, &rprm.name, &sv.name, &ig.name, &cct, &be_v.name, &bev, &cur})
            if (l->first.size() < n_first) l->close_entry();
    }
};
