#pragma once

#include <QTextStream>

template <typename T> class TTree;
class KAObject2;

// Prints a browser tree, one node per line, two spaces per level: the
// object's name, its kind in brackets, "(hidden)" when the node is not
// visible; children in the model's order. Placeholders are left out.
void printTree(QTextStream& out, const TTree<KAObject2*>* node, int depth = 0);
