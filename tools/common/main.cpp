/// The main function of the companion that this is compiled for.
int PEAKBOX_TOOL(int count, char** words);

int main(int count, char** words) { return PEAKBOX_TOOL(count, words); }
