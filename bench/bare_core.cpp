// What a program of Qt Core has to take at least.

#include <QCoreApplication>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return 0;
}
