// The command-line front end lands here.
