namespace vell::archive {}
