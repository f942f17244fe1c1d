// The node's code read from an executable: its function symbol found, its
// words decoded, laid out (node_layout.h) and written as the text of a
// listing (listing_writer.h). velcor feeds that text to the listing scanner
// as it would a listing file; velcor-disasm prints it.
#ifndef VELCOR_SRC_PPC_NODE_CODE_H
#define VELCOR_SRC_PPC_NODE_CODE_H

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

class ElfImage;

// The listing of node a_node of a_image. Stops the run with a message
// naming the executable and the node when the node has no code to read.
std::string nodeListing(const ElfImage& a_image, const std::string& a_node);

// The image of the executable whose first bytes a_start were read from the
// open stream a_file (named a_path); reads the rest, and stops the run as
// nodeListing does when it cannot.
std::unique_ptr<ElfImage> readNodeImage(FILE* a_file, std::vector<unsigned char> a_start, const std::string& a_path,
                                        const std::string& a_node);

// The listing of node a_node of the executable whose first bytes a_start
// were read from the open stream a_file (named a_path); reads the rest.
std::string nodeListing(FILE* a_file, std::vector<unsigned char> a_start, const std::string& a_path,
                        const std::string& a_node);

#endif
